#include "backends/linux/host/ProgramOutput.h"
#include "tests/linux/StatusItemFixture.h"
#include "tests/linux/Stopwatch.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>

namespace paneweld_tests {

using platform::StatusItemPlace;

namespace {

// A test of one return more is one that fails now and then.
constexpr int rounds = 100;
constexpr std::chrono::milliseconds timeLimit { 250 };

} // namespace

class StatusWatcherTest : public StatusItemTest { };

TEST_F(StatusWatcherTest, TheWatcherGoesAndComesBack)
{
    startShown();
    Stopwatch stopwatch("the watcher's return");
    for (int i = 0; i < rounds; ++i) {
        watcher.reset();
        ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
        stopwatch.start();
        startWatcher();
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        stopwatch.stop();
        expectOnTheListOnce(*watcher);
    }
    EXPECT_LE(stopwatch.slowest(), timeLimit);
}

TEST_F(StatusWatcherTest, TheWatcherHandsOverWithoutAGap)
{
    startShown();
    Stopwatch stopwatch("another watcher");
    for (int i = 0; i < rounds; ++i) {
        auto const before = std::move(watcher);
        stopwatch.start();
        startWatcher();
        ASSERT_TRUE(pumpUntil([&] { return watcher->count("Register") > 0; }));
        stopwatch.stop();
        settle();
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        expectOnTheListOnce(*watcher);
        EXPECT_EQ(before->count("Register"), 1);
    }
    EXPECT_LE(stopwatch.slowest(), timeLimit);
}

TEST_F(StatusWatcherTest, TheWatcherIsThereBeforeItsHost)
{
    start();
    Stopwatch stopwatch("a host that comes after its watcher");
    for (int i = 0; i < rounds; ++i) {
        startWatcher({ .hasHost = false });
        ASSERT_TRUE(waitFor(StatusItemPlace::Waiting));
        stopwatch.start();
        watcher->setHost(true);
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        stopwatch.stop();
        expectOnTheListOnce(*watcher);
        watcher->setHost(false);
        ASSERT_TRUE(waitFor(StatusItemPlace::Waiting));
        watcher->setHost(true);
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        expectOnTheListOnce(*watcher);
        watcher.reset();
        ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
    }
    EXPECT_EQ(places.size(), 5u * rounds);
    EXPECT_LE(stopwatch.slowest(), timeLimit);
}

TEST_F(StatusWatcherTest, TheWatcherComesLate)
{
    bus = std::make_unique<SessionBus>();
    Stopwatch stopwatch("a late watcher");
    for (int i = 0; i < rounds; ++i) {
        makeBar(bus->address());
        item = makeItem();
        // Whatever was to be asked has been answered, and nothing is waited for.
        startPanel();
        settle();
        EXPECT_FALSE(isReadable(5));
        EXPECT_EQ(place(), StatusItemPlace::Nowhere);
        stopwatch.start();
        startWatcher();
        ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
        stopwatch.stop();
        expectOnTheListOnce(*watcher);
        panel.reset();
        watcher.reset();
        item.reset();
    }
    EXPECT_LE(stopwatch.slowest(), timeLimit);
}

TEST_F(StatusWatcherTest, ARefusalIsTriedAgainUntilItIsNoMoreUse)
{
    start();
    startWatcher({ .refusals = 2 });
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items(), Texts { itemName() });
    EXPECT_EQ(watcher->count("Register"), 3);
    ASSERT_EQ(lines.messages.size(), 1u);
    EXPECT_TRUE(lines.messages[0].starts_with("refused by the desktop's list of status items: "
                                              "org.freedesktop.DBus.Error.UnknownObject"))
        << lines.messages[0];

    watcher.reset();
    waitFor(StatusItemPlace::Nowhere);
    startWatcher({ .refusals = 7 });
    ASSERT_TRUE(pumpUntil([&] { return lines.messages.size() == 3; }));
    EXPECT_TRUE(lines.messages[2].starts_with("given up after refusals")) << lines.messages[2];
    EXPECT_EQ(watcher->count("Register"), 7);
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
    // A panel that comes may mean that it works now.
    watcher->setHost(true);
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items(), Texts { itemName() });
}

TEST_F(StatusWatcherTest, AWatcherThatNeverAnswersShowsNothing)
{
    start();
    startWatcher({ .neverAnswers = true });
    startPanel();
    settle();
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
    // Who follows it is told at once.
    startWatcher();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    expectOnTheListOnce(*watcher);
}

TEST_F(StatusWatcherTest, AWatcherThatIsThereIsToldBeforeItIsAsked)
{
    startShown();
    EXPECT_TRUE(watcher->calls().front().starts_with("Register ")) << watcher->calls().front();
    expectOnTheListOnce(*watcher);
}

TEST_F(StatusWatcherTest, AWatcherThatRefusesAtFirstHasTheItemAtOnce)
{
    bus = std::make_unique<SessionBus>();
    startWatcher({ .refusals = 1 });
    makeBar(bus->address());
    item = makeItem();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items(), Texts { itemName() });
    EXPECT_EQ(watcher->count("Register"), 2);
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(StatusWatcherTest, AWatcherThatHasNoObjectAtFirstIsAskedForItsHostAgain)
{
    // Before the item and after it.
    bus = std::make_unique<SessionBus>();
    startWatcher({ .refusals = 1, .hostRefusals = 1 });
    makeBar(bus->address());
    item = makeItem();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->count("hosts?"), 2);
    startWatcher({ .refusals = 2, .hostRefusals = 1 });
    ASSERT_TRUE(pumpUntil([&] { return watcher->items().size() == 1; }));
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->count("hosts?"), 2);
}

TEST_F(StatusWatcherTest, AWatcherThatHasTheItemAndKnowsOfNoHostsHasNone)
{
    start();
    // It looks for no watcher any more when this one comes.
    startPanel();
    settle();
    startWatcher({ .hostRefusals = 2 });
    ASSERT_TRUE(waitFor(StatusItemPlace::Waiting));
    EXPECT_EQ(watcher->count("hosts?"), 2);
    watcher->setHost(true);
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->count("hosts?"), 3);
}

TEST_F(StatusWatcherTest, HandsOverWhileAnItemComes)
{
    bus = std::make_unique<SessionBus>();
    for (auto const neverAnswers : { false, true }) {
        for (int steps = 0; steps < rounds / 2; ++steps) {
            startWatcher({ .neverAnswers = neverAnswers });
            auto const before = std::move(watcher);
            makeBar(bus->address());
            item = makeItem();
            for (int i = 0; i < steps; ++i)
                loop->dispatch();
            startWatcher();
            ASSERT_TRUE(waitFor(StatusItemPlace::Panel)) << steps;
            startPanel();
            settle();
            ASSERT_EQ(place(), StatusItemPlace::Panel) << steps;
            expectOnTheListOnce(*watcher);
            EXPECT_LE(before->count("Register"), 1) << steps;
            panel.reset();
            item.reset();
        }
    }
}

TEST_F(StatusWatcherTest, IsNotStartedForAnItem)
{
    platform::TemporaryFolder const folder;
    auto const mark = folder.path() + "/started";
    std::filesystem::create_directories(folder.path() + "/dbus-1/services");
    folder.write("dbus-1/services/watcher.service",
        "[D-BUS Service]\nName=org.kde.StatusNotifierWatcher\nExec=/bin/sh -c \"touch " + mark + "; exit 1\"\n");
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    bus = std::make_unique<SessionBus>(SessionBus::Services::Installed);
    makeBar(bus->address());
    item = makeItem();
    startPanel();
    settle();
    EXPECT_FALSE(std::filesystem::exists(mark));
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
    // Somebody else can start it: it runs, and fails before the bus answers.
    EXPECT_FALSE(backends::outputOfProgram(
        { "dbus-send", "--session", "--print-reply", "--dest=org.kde.StatusNotifierWatcher", "/", "org.kde.Any.Call" },
        std::chrono::steady_clock::now() + std::chrono::seconds(15)));
    EXPECT_TRUE(std::filesystem::exists(mark));
}

} // namespace paneweld_tests
