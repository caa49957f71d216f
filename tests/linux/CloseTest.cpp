#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/appkit/NSScreen.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/HostInfo.h"

#include <algorithm>
#include <cstdlib>

namespace paneweld_tests {

class Closing : public LinuxTest { };

TEST_F(Closing, AsksTheOwnerAndReportsWhenTheWindowGoes)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "leaving" });
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    news.clear();
    shown->close();
    EXPECT_TRUE(news.empty());
    ASSERT_TRUE(pumpUntil([&] { return count("close leaving") == 1; }));
    EXPECT_EQ(toolkit->closeRequests, 1);
    EXPECT_EQ(news, (std::vector<std::string> { "resign leaving", "close leaving" }));
}

TEST_F(Closing, AnOwnerThatRefusesChangesNothing)
{
    start(With::WindowManager);
    toolkit->closesWhenAsked = false;
    auto const shown = show({ .title = "staying" });
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    news.clear();
    shown->close();
    ASSERT_TRUE(pumpUntil([&] { return toolkit->closeRequests == 1; }));
    settle();
    EXPECT_TRUE(news.empty());
    EXPECT_TRUE(shown->isVisible());
    EXPECT_TRUE(shown->isKeyWindow());
}

TEST_F(Closing, AWindowThatCannotBeAskedIsLeftAlone)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "deaf", .hasDeleteProtocol = false });
    shown->close();
    settle();
    settle();
    EXPECT_TRUE(onlooker->isViewable(xid(shown)));
    EXPECT_TRUE(shown->isVisible());
}

TEST_F(Closing, EndsTheAnimationsOfTheWindow)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "short" });
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto& group) {
            group.setDuration(platform::Seconds { 3600 });
            shown->animator().setFrame({ 0, 0, 900, 700 }, platform::Display::Yes);
            shown->animator().setAlphaValue(0.5);
        },
        [&] { hasEnded = true; });
    shown->close();
    EXPECT_TRUE(pumpUntil([&] { return hasEnded; }));
    EXPECT_EQ(count("close short"), 1);
}

TEST_F(Closing, TerminateIsTheHostsOwnWay)
{
    start(With::WindowManager);
    show({ .title = "kept" });
    int calls = 0;
    backend->setTerminateHandler([&] { ++calls; });
    backend->application().terminate();
    settle();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(toolkit->closeRequests, 0);
}

TEST_F(Closing, TerminateWithoutAWayOfTheHostClosesAllWindowsAndExits)
{
    // The process of this test has one X server; its child makes the world and ends it.
    EXPECT_EXIT(
        {
            start(With::Nothing);
            show({ .title = "one" });
            show({ .title = "two" });
            backend->application().terminate();
            pumpUntil([&] { return false; });
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(Closing, TerminateExitsAlsoWhenAWindowRefuses)
{
    EXPECT_EXIT(
        {
            start(With::Nothing);
            toolkit->closesWhenAsked = false;
            show({ .title = "stubborn" });
            backend->application().terminate();
            pumpUntil([&] { return false; });
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

class Loss : public LinuxTest { };

TEST_F(Loss, OfTheServerClosesEveryWindowAndTheProcessLivesOn)
{
    start(With::Nothing);
    auto const first = show({ .title = "first" });
    auto const second = show({ .title = "second" });
    second->makeKeyAndOrderFront();
    ASSERT_TRUE(pumpUntil([&] { return second->isKeyWindow(); }));
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            first->animator().setFrame({ 0, 0, 800, 600 }, platform::Display::Yes);
        },
        [&] { hasEnded = true; });
    news.clear();
    desktop->endServer();
    ASSERT_TRUE(pumpWithoutServerUntil([&] { return count("close first") == 1 && count("close second") == 1; }));
    EXPECT_LT(
        std::find(news.begin(), news.end(), "resign second"), std::find(news.begin(), news.end(), "close second"));
    EXPECT_TRUE(backend->application().windows().empty());
    EXPECT_EQ(backend->windowReach(), backends::WindowReach::Unreachable);
    EXPECT_FALSE(backend->mainScreen());
    ASSERT_TRUE(pumpWithoutServerUntil([&] { return hasEnded; }));
    // Nobody minds what comes too late.
    first->setFrame({ 0, 0, 100, 100 }, platform::Display::Yes);
    first->setTitle("late");
    first->close();
    EXPECT_FALSE(backend->announceX11Window(1));
    backend->application().activateIgnoringOtherApps(true);
    bool hasRun = false;
    backend->mainQueue().async([&] { hasRun = true; });
    EXPECT_TRUE(pumpWithoutServerUntil([&] { return hasRun; }));
    EXPECT_EQ(news.size(), 3u);
}

TEST(NoServer, LeavesEverythingButWindowsAtWork)
{
    backends::LinuxOptions options;
    options.display = ":9999999";
    auto made = backends::makeLinuxPlatform(options);
    ASSERT_TRUE(made.hasValue());
    auto const backend = made.take();
    EXPECT_EQ(backend->windowReach(), backends::WindowReach::Unreachable);
    EXPECT_FALSE(backend->mainScreen());
    EXPECT_FALSE(backend->announceX11Window(42));
    EXPECT_FALSE(backend->beginMove(42, 0, 0, 1));
    EXPECT_EQ(backend->adoptX11Window(42), nullptr);
    EXPECT_FALSE(backend->eventMonitors().addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, {}, [](auto const& event) { return std::optional(event); }));
    EXPECT_FALSE(backend->hostInfo().operatingSystemVersionString().empty());
    bool hasRun = false;
    backend->mainQueue().async([&] { hasRun = true; });
    backend->dispatch();
    EXPECT_TRUE(hasRun);
}

} // namespace paneweld_tests
