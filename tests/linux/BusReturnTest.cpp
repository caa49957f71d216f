#include "backends/linux/dbus/BusAddress.h"
#include "tests/linux/SilentSocket.h"
#include "tests/linux/StatusItemFixture.h"
#include "tests/linux/Stopwatch.h"

#include <memory>
#include <optional>
#include <unistd.h>

namespace paneweld_tests {

using platform::StatusItemPlace;

namespace {

constexpr int rounds = 20;

} // namespace

TEST(BusAddress, SaysWhereTheSocketIs)
{
    using backends::socketPath;
    EXPECT_EQ(socketPath("unix:path=/run/user/1000/bus"), "/run/user/1000/bus");
    EXPECT_EQ(socketPath("tcp:host=here,port=1;unix:guid=0a,path=/a%20b%2fbus,x=y;unix:path=/c"), "/a b/bus");
    EXPECT_EQ(socketPath("unix:path=/50%"), "/50%");
    EXPECT_EQ(socketPath("unix:path=/50%zz%4"), "/50%zz%4");
    EXPECT_EQ(socketPath("unix:abstract=/tmp/bus"), std::nullopt);
    EXPECT_EQ(socketPath("tcp:path=/bus"), std::nullopt);
    EXPECT_EQ(socketPath(""), std::nullopt);
}

TEST(BusAddress, CanGoWithoutAnIdentity)
{
    using backends::withoutIdentity;
    EXPECT_EQ(withoutIdentity("unix:path=/bus,guid=0123"), "unix:path=/bus");
    EXPECT_EQ(withoutIdentity("unix:guid=01,path=/bus;unix:abstract=x"), "unix:path=/bus;unix:abstract=x");
    EXPECT_EQ(withoutIdentity("autolaunch:"), "autolaunch:");
    EXPECT_EQ(withoutIdentity("nonsense"), "nonsense");
    EXPECT_EQ(withoutIdentity(""), "");
}

class BusReturnTest : public StatusItemTest {
protected:
    bool waitFor(StatusItemPlace expected)
    {
        return pumpUntil([&] { return place() == expected; });
    }
    void startWatcher() { watcher = std::make_unique<StatusWatcherStandIn>(bus->address()); }
    void endBus()
    {
        panel.reset();
        watcher.reset();
        bus->end();
        ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
    }
    void expectRegisteredOnce()
    {
        EXPECT_EQ(watcher->items(), Texts { itemName() });
        EXPECT_EQ(watcher->count("Register"), 1);
    }
    // A bar whose bus is at a place where nothing is yet.
    std::string makeBarWithoutBus()
    {
        bus = std::make_unique<SessionBus>();
        auto const address = bus->address();
        bus->end();
        unlink(bus->socket().c_str());
        makeBar(address);
        return bus->socket();
    }
};

TEST_F(BusReturnTest, TheItemIsThereAgainOnceWithItsMenu)
{
    fillMenu();
    startShown();
    // Who has seen the menu before sees the same one on the new bus.
    answer(panel->askMenu("AboutToShow", "i", 0));
    auto const layout = answer(panel->askMenu("GetLayout", "iias", 0, -1, 0));
    settle();
    actions.clear();
    Stopwatch stopwatch("the bus's return");
    for (int i = 0; i < rounds; ++i) {
        endBus();
        bus->startAgain();
        stopwatch.start();
        startWatcher();
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        stopwatch.stop();
        expectRegisteredOnce();
    }
    startPanel();
    EXPECT_EQ(answer(panel->askMenu("GetLayout", "iias", 0, -1, 0)), layout);
    answer(panel->askItem("Activate", "ii", 0, 0));
    settle();
    EXPECT_EQ(actions, Texts { "left" });
    EXPECT_LE(stopwatch.slowest(), std::chrono::milliseconds(250));
}

TEST_F(BusReturnTest, ABusThatIsLateIsFoundWithoutLookingForIt)
{
    makeBarWithoutBus();
    item = makeItem();
    ASSERT_EQ(lines.messages.size(), 1u);
    // The first attempts lie close together; then it is quiet, and what else happens in the folder is nothing.
    pumpUntil([&] { return !isReadable(200); });
    bus->startAgain();
    startWatcher();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    expectRegisteredOnce();
    EXPECT_EQ(lines.messages.size(), 1u);
}

TEST_F(BusReturnTest, ABusThatDiesDuringTheHandshakeIsTriedAgain)
{
    auto const place = makeBarWithoutBus();
    auto silent = std::make_unique<SilentSocket>(place);
    item = makeItem();
    auto const meet = [&] { return pumpUntil([&] { return silent->accept(); }); };
    auto const hear = [&](char const* words) { return pumpUntil([&] { return silent->hasHeard(words); }); };
    constexpr auto welcome = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n";

    // Before a word, after the first words, with words that are none, and after the bus was greeted.
    ASSERT_TRUE(meet());
    silent->hangUp();
    ASSERT_TRUE(meet());
    ASSERT_TRUE(hear("AUTH EXTERNAL"));
    silent->say("DATA\r\nREJ");
    silent->hangUp();
    ASSERT_TRUE(meet());
    ASSERT_TRUE(hear("AUTH EXTERNAL"));
    silent->say("220 mail.example.org ESMTP\r\n\r\n\r\n\r\n");
    ASSERT_TRUE(meet());
    ASSERT_TRUE(hear("BEGIN"));
    silent->say(welcome);
    ASSERT_TRUE(hear("Hello"));
    silent->say("l\2\1\1garbage that is no message of any length, and far too long for the header of one");
    silent->hangUp();
    ASSERT_TRUE(meet());
    EXPECT_EQ(this->place(), StatusItemPlace::Nowhere);

    silent.reset();
    bus->startAgain();
    startWatcher();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    expectRegisteredOnce();
}

TEST_F(BusReturnTest, ASocketThatHangsUpAtOnceIsNotTriedForEver)
{
    auto const place = makeBarWithoutBus();
    SilentSocket silent(place);
    item = makeItem();
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < end) {
        loop->dispatch();
        silent.accept();
        silent.hangUp();
        isReadable(2);
    }
    // Ever longer waits: in two seconds some eight, where trying at once would make hundreds.
    EXPECT_GE(silent.connections(), 5);
    EXPECT_LE(silent.connections(), 10);
}

TEST_F(BusReturnTest, TheItemMayGoWhileItsBusIsAway)
{
    startShown();
    endBus();
    item.reset();
    bus->startAgain();
    startWatcher();
    loop->dispatch();
    item = makeItem();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    // The news of the loss can be what ends it.
    bar->setPlaceHandler([&] { item.reset(); });
    bus->end();
    ASSERT_TRUE(pumpUntil([&] { return item == nullptr; }));
    bus->startAgain();
    startWatcher();
    loop->dispatch();
    EXPECT_EQ(watcher->items(), Texts {});
}

} // namespace paneweld_tests
