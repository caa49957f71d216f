#include "tests/support/MemoryStage.h"
#include "tests/support/X11Stage.h"

#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/appkit/NSScreen.h"
#include "platform/appkit/NSVisualEffectView.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/HostInfo.h"

#include <atomic>
#include <thread>

using platform::Display;
using platform::NSEvent;
using platform::NSWindow;
using platform::Rect;
using platform::WindowButton;

// What every backend owes the plug-in, on every backend.

namespace {

template<typename Stage>
class Conformance : public Stage {
protected:
    using News = std::vector<std::string>;

    void SetUp() override { this->open(); }

    // Pixels are whole; a frame is where it should be within half of one.
    static bool isNear(Rect const& a, Rect const& b)
    {
        return std::abs(a.x - b.x) <= 0.5 && std::abs(a.y - b.y) <= 0.5 && std::abs(a.width - b.width) <= 0.5
            && std::abs(a.height - b.height) <= 0.5;
    }
};

using Stages = testing::Types<MemoryStage, X11Stage>;
TYPED_TEST_SUITE(Conformance, Stages);

} // namespace

TYPED_TEST(Conformance, AShownWindowIsReportedOnceAndIsVisibleAndListed)
{
    auto const window = this->show("one");
    EXPECT_EQ(this->count("visible one"), 1);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->canBecomeKeyWindow());
    EXPECT_EQ(this->platform().application().windows(), std::vector<std::shared_ptr<NSWindow>> { window });
    EXPECT_EQ(window->title(), "one");
    EXPECT_FALSE(window->className().empty());
}

TYPED_TEST(Conformance, WindowsAreListedInOrderOfCreation)
{
    auto const first = this->show("first");
    auto const second = this->show("second");
    this->makeKey(*first);
    EXPECT_EQ(this->platform().application().windows(), (std::vector<std::shared_ptr<NSWindow>> { first, second }));
}

TYPED_TEST(Conformance, ATitleIsWhatItWasSetTo)
{
    auto const window = this->show("before");
    window->setTitle("Später – 之后");
    EXPECT_EQ(window->title(), "Später – 之后");
    this->settle();
    EXPECT_EQ(window->title(), "Später – 之后");
}

TYPED_TEST(Conformance, AFrameIsItsTargetAtOnceAndReached)
{
    auto const window = this->show("w");
    Rect const target { 200, 150, 500, 260 };
    window->setFrame(target, Display::Yes);
    EXPECT_EQ(window->frame(), target);
    this->settle();
    this->pumpUntil([&] { return this->isNear(window->frame(), target); });
}

TYPED_TEST(Conformance, KeyGoesFromOneWindowToTheOtherAndTheOldOneResignsFirst)
{
    auto const first = this->show("first");
    auto const second = this->show("second");
    this->makeKey(*first);
    this->news.clear();
    this->makeKey(*second);
    EXPECT_EQ(this->news, (std::vector<std::string> { "resign first", "key second" }));
    EXPECT_EQ(this->platform().application().keyWindow(), second);
    EXPECT_FALSE(first->isKeyWindow());
}

TYPED_TEST(Conformance, AKeyWindowResignsBeforeItCloses)
{
    auto const window = this->show("w");
    this->makeKey(*window);
    this->news.clear();
    window->close();
    this->pumpUntil([&] { return this->count("close w") == 1; });
    EXPECT_EQ(this->news, (std::vector<std::string> { "resign w", "close w" }));
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(this->platform().application().windows().empty());
}

TYPED_TEST(Conformance, ARefusedCloseChangesNothing)
{
    auto const window = this->show("w");
    this->makeKey(*window);
    this->refuseToClose(*window);
    this->news.clear();
    window->close();
    this->settle();
    this->settle();
    EXPECT_TRUE(this->news.empty());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isKeyWindow());
}

TYPED_TEST(Conformance, AHiddenWindowIsClosedAndShownAgainItIsReportedAgain)
{
    auto const window = this->show("w");
    this->withdraw(*window);
    this->pumpUntil([&] { return this->count("close w") == 1; });
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->canBecomeKeyWindow());
    this->showAgain(*window);
    this->pumpUntil([&] { return this->count("visible w") == 2; });
    EXPECT_EQ(this->count("close w"), 1);
    EXPECT_EQ(this->platform().application().windows(), std::vector<std::shared_ptr<NSWindow>> { window });
}

TYPED_TEST(Conformance, AHiddenWindowIsNotShownBehindItsToolkitsBack)
{
    auto const window = this->show("w");
    this->withdraw(*window);
    this->news.clear();
    window->orderFrontRegardless();
    window->makeKeyAndOrderFront();
    this->settle();
    this->settle();
    EXPECT_TRUE(this->news.empty());
    EXPECT_FALSE(window->isVisible());
}

TYPED_TEST(Conformance, MakeKeyAndOrderFrontGivesTheKeyboard)
{
    auto const first = this->show("first");
    auto const second = this->show("second");
    this->makeKey(*second);
    first->makeKeyAndOrderFront();
    this->pumpUntil([&] { return first->isKeyWindow(); });
}

TYPED_TEST(Conformance, ALevelIsTheLastOneSet)
{
    auto const window = this->show("w");
    EXPECT_EQ(window->level(), platform::windowLevelNormal);
    window->setLevel(platform::windowLevelFloating);
    this->settle();
    EXPECT_EQ(window->level(), platform::windowLevelFloating);
    window->setLevel(platform::windowLevelNormal);
    EXPECT_EQ(window->level(), platform::windowLevelNormal);
}

TYPED_TEST(Conformance, AlphaLimitsAndStyleAreWhatTheyWereSetTo)
{
    auto const window = this->show("w");
    EXPECT_EQ(window->alphaValue(), 1);
    window->setAlphaValue(0.5);
    window->setContentMinSize({ 300, 91 });
    window->setContentMaxSize({ 900, 700 });
    window->setStyleMask(window->styleMask() | platform::styleMaskFullSizeContentView);
    this->settle();
    EXPECT_EQ(window->alphaValue(), 0.5);
    EXPECT_EQ(window->contentMinSize(), (platform::Size { 300, 91 }));
    EXPECT_EQ(window->contentMaxSize(), (platform::Size { 900, 700 }));
    EXPECT_NE(window->styleMask() & platform::styleMaskFullSizeContentView, 0u);
}

TYPED_TEST(Conformance, EveryWindowHasStandardButtonsAndAContentView)
{
    auto const window = this->show("w");
    for (auto const which : { WindowButton::Close, WindowButton::Miniaturize, WindowButton::Zoom }) {
        auto* const button = window->standardWindowButton(which);
        ASSERT_TRUE(button);
        button->setHidden(true);
        EXPECT_TRUE(button->isHidden());
    }
    auto const content = window->contentView();
    ASSERT_TRUE(content);
    content->addSubview(std::make_shared<platform::NSVisualEffectView>(), platform::ViewPosition::Below, nullptr);
    EXPECT_EQ(content, window->contentView());
    this->settle();
}

TYPED_TEST(Conformance, AnAnimationOnlyGrowsEndsExactlyAndCompletesOnce)
{
    auto const window = this->show("w");
    window->setFrame({ 300, 100, 400, 100 }, Display::Yes);
    this->pumpUntil([&] { return this->isNear(window->frame(), { 300, 100, 400, 100 }); });
    Rect const target { 300, 100, 400, 500 };
    int completions = 0;
    this->platform().animationContext().runAnimationGroup(
        [&](auto&) { window->animator().setFrame(target, Display::Yes); }, [&] { ++completions; });
    double last = 0;
    int steps = 0;
    this->pumpUntil([&] {
        auto const frame = window->frame();
        EXPECT_GE(frame.height, last);
        EXPECT_EQ(frame.y, 100);
        steps += frame.height > last && frame.height < 500 ? 1 : 0;
        last = frame.height;
        return completions == 1;
    });
    EXPECT_GT(steps, 1);
    EXPECT_EQ(window->frame(), target);
    this->settle();
    EXPECT_EQ(completions, 1);
}

TYPED_TEST(Conformance, APlainFrameEndsARunningAnimationWithItsCompletionOnTheNextTurn)
{
    auto const window = this->show("w");
    int completions = 0;
    this->platform().animationContext().runAnimationGroup(
        [&](auto&) {
            window->animator().setFrame({ 100, 100, 400, 700 }, Display::Yes);
        },
        [&] { ++completions; });
    window->setFrame({ 100, 100, 400, 200 }, Display::Yes);
    EXPECT_EQ(completions, 0);
    this->pumpUntil([&] { return completions == 1; });
    EXPECT_EQ(window->frame().height, 200);
}

TYPED_TEST(Conformance, ClosingEndsAnAnimationWithItsCompletion)
{
    auto const window = this->show("w");
    int completions = 0;
    this->platform().animationContext().runAnimationGroup(
        [&](auto& group) {
            group.setDuration(platform::Seconds { 60 });
            window->animator().setFrame({ 100, 100, 400, 700 }, Display::Yes);
        },
        [&] { ++completions; });
    window->close();
    this->pumpUntil([&] { return completions == 1; });
}

TYPED_TEST(Conformance, AKeyOfInterestIsSeenFirstAndConsumedOrGivenBack)
{
    auto const window = this->show("w");
    this->makeKey(*window);
    EXPECT_TRUE(this->pressEscape());
    int seen = 0;
    bool consumes = true;
    auto const monitor = this->platform().eventMonitors().addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, { platform::keyCodeEscape }, [&](NSEvent const& event) -> std::optional<NSEvent> {
            ++seen;
            EXPECT_EQ(event.keyCode, platform::keyCodeEscape);
            EXPECT_EQ(event.type, platform::EventType::KeyDown);
            return consumes ? std::nullopt : std::optional(event);
        });
    this->settle();
    EXPECT_FALSE(this->pressEscape());
    EXPECT_EQ(seen, 1);
    consumes = false;
    EXPECT_TRUE(this->pressEscape());
    EXPECT_EQ(seen, 2);
    this->platform().eventMonitors().removeMonitor(monitor);
    this->settle();
    EXPECT_TRUE(this->pressEscape());
    EXPECT_EQ(seen, 2);
}

TYPED_TEST(Conformance, AMonitorMayRemoveItselfAndCloseItsWindow)
{
    auto const window = this->show("w");
    this->makeKey(*window);
    std::shared_ptr<platform::NSEventMonitor> monitor;
    monitor = this->platform().eventMonitors().addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, { platform::keyCodeEscape }, [&](NSEvent const&) -> std::optional<NSEvent> {
            this->platform().eventMonitors().removeMonitor(monitor);
            window->close();
            return std::nullopt;
        });
    this->settle();
    this->pressEscape();
    this->pumpUntil([&] { return this->count("close w") == 1; });
}

TYPED_TEST(Conformance, AnObserverOfTheShowMayCloseTheWindow)
{
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { platform::windowWillBecomeVisibleNotification(), nullptr, {} },
        [](auto const& heard) { std::dynamic_pointer_cast<NSWindow>(heard.object)->close(); });
    this->show("w");
    this->pumpUntil([&] { return this->count("close w") == 1; });
    EXPECT_TRUE(this->platform().application().windows().empty());
}

TYPED_TEST(Conformance, TheMainQueueRunsLaterInOrderAndTakesWorkFromAnyThread)
{
    auto& queue = this->platform().mainQueue();
    std::vector<int> order;
    queue.async([&] {
        order.push_back(1);
        queue.async([&] { order.push_back(3); });
    });
    queue.async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    this->pumpUntil([&] { return order.size() == 3; });
    std::thread([&] { queue.async([&] { order.push_back(4); }); }).join();
    this->pumpUntil([&] { return order.size() == 4; });
    EXPECT_EQ(order, (std::vector<int> { 1, 2, 3, 4 }));
}

TYPED_TEST(Conformance, ASerialQueueRunsItsWorkInOrder)
{
    auto const queue = this->platform().makeSerialQueue("test");
    std::vector<int> order;
    std::atomic<bool> isDone = false;
    for (int i = 0; i < 100; ++i)
        queue->async([&order, i] { order.push_back(i); });
    queue->async([&] { isDone = true; });
    this->pumpUntil([&] { return isDone.load(); });
    EXPECT_EQ(order.size(), 100u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TYPED_TEST(Conformance, TheMainScreenHoldsItsUsableArea)
{
    auto const screen = this->platform().mainScreen();
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->frame, (Rect { 0, 0, 1280, 800 }));
    EXPECT_GE(screen->visibleFrame.minY(), screen->frame.minY());
    EXPECT_LE(screen->visibleFrame.maxY(), screen->frame.maxY());
    EXPECT_GT(screen->visibleFrame.height, 600);
}

TYPED_TEST(Conformance, TheMachineAnswers)
{
    auto const& host = this->platform().hostInfo();
    ASSERT_TRUE(host.localizedName());
    EXPECT_EQ(host.localizedName(), host.localizedName());
    EXPECT_FALSE(host.operatingSystemVersionString().empty());
    auto const home = this->platform().fileManager().homeDirectoryForCurrentUser();
    EXPECT_TRUE(home.isFileURL());
    EXPECT_TRUE(home.absoluteString().ends_with('/'));
    EXPECT_FALSE(this->platform().fileManager().isReadableFile("/no/such/file"));
}
