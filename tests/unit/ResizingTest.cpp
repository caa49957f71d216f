#include "iOS/NSWindow+Paneweld.h"
#include "iOS/ResizeBrainstormWindow.h"
#include "tests/support/RunOptions.h"
#include "tests/support/World.h"

#include <limits>
#include <random>
#include <thread>

using namespace paneweld;
using platform::Rect;
using platform::Seconds;
using platform::Size;

namespace {

using Preferred = BrainstormWindowPreferredHeightDidChange;

class Resizing : public World {
protected:
    void SetUp() override
    {
        startWindowManager();
        panel = showBrainstorm("b1");
        world.advance(Seconds { 1 });
    }

    void request(Preferred const& payload)
    {
        post(NotificationName::brainstormWindowPreferredHeightDidChange(), payload.userInfo());
    }

    static Preferred toHeight(double height, bool animate = false)
    {
        Preferred payload { "b1", animate };
        payload.preferredHeight = height;
        return payload;
    }

    static std::vector<double> heights(Hearer const& hearer)
    {
        std::vector<double> heights;
        for (auto const& notification : hearer.heard)
            heights.push_back(BrainstormWindowResize::from(notification)->height);
        return heights;
    }

    std::shared_ptr<backends::MemoryWindow> panel;
};

} // namespace

TEST_F(Resizing, AHugeHeightIsLimitedToTheKindsMaximum)
{
    request(toHeight(2000));
    EXPECT_EQ(panel->frame(), (Rect { 320, 84, 640, 1440 }));
}

TEST_F(Resizing, TheMinimumWinsOverAPreferredHeight)
{
    auto payload = toHeight(300);
    payload.minHeight = 500;
    request(payload);
    EXPECT_EQ(panel->frame().height, 500);
    EXPECT_EQ(panel->contentMinSize(), (Size { 640, 500 }));
    EXPECT_EQ(panel->contentMaxSize(), (Size { 1280, 1440 }));
}

TEST_F(Resizing, AHalfPointMovesNothingButIsReportedTwice)
{
    Hearer const will(NotificationName::brainstormWindowWillResize());
    Hearer const did(NotificationName::brainstormWindowDidResize());
    request(toHeight(91.5, true));
    EXPECT_EQ(panel->frame(), (Rect { 320, 84, 640, 91 }));
    EXPECT_EQ(heights(will), std::vector<double> { 91.5 });
    EXPECT_EQ(heights(did), std::vector<double> { 91.5 });
    EXPECT_EQ(will.heard[0].object, nullptr);
    EXPECT_EQ(will.heard[0].userInfo,
        (platform::Dictionary {
            { "height", 91.5 }, { "minHeight", 91.0 }, { "maxHeight", 1440.0 }, { "windowID", "b1" } }));
}

TEST_F(Resizing, ThreeQuartersOfAPointIsStillNothingAndMoreIsAMove)
{
    request(toHeight(91.75));
    EXPECT_EQ(panel->frame().height, 91);
    request(toHeight(91.76));
    EXPECT_EQ(panel->frame().height, 91.76);
}

TEST_F(Resizing, AWidthKeepsTheCentreAndItsOwnLimits)
{
    auto payload = toHeight(91);
    payload.preferredWidth = 900;
    request(payload);
    EXPECT_EQ(panel->frame(), (Rect { 190, 84, 900, 91 }));
    payload.preferredWidth = 100;
    request(payload);
    EXPECT_EQ(panel->frame(), (Rect { 320, 84, 640, 91 }));
    payload.preferredWidth = 5000;
    request(payload);
    EXPECT_EQ(panel->frame().width, 1280);
}

TEST_F(Resizing, NegativeAndHugeNumbersEndInsideTheLimits)
{
    request(toHeight(-50));
    EXPECT_EQ(panel->frame().height, 91);
    request(toHeight(std::numeric_limits<double>::max()));
    EXPECT_EQ(panel->frame().height, 1440);
    auto payload = toHeight(100);
    payload.minHeight = -1000;
    payload.maxHeight = -2000;
    Hearer const will(NotificationName::brainstormWindowWillResize());
    request(payload);
    EXPECT_EQ(panel->frame().height, 44);
    EXPECT_EQ(heights(will), std::vector<double> { -1000 });
}

TEST_F(Resizing, ATargetBelowFortyFourIsReportedAsAskedAndFramedHigher)
{
    auto payload = toHeight(30);
    payload.minHeight = 20;
    Hearer const will(NotificationName::brainstormWindowWillResize());
    Hearer const did(NotificationName::brainstormWindowDidResize());
    request(payload);
    EXPECT_EQ(panel->frame().height, 44);
    EXPECT_EQ(heights(will), std::vector<double> { 30 });
    EXPECT_EQ(heights(did), std::vector<double> { 30 });
}

TEST_F(Resizing, ARequestForAnUnknownWindowDoesNothing)
{
    Hearer const will(NotificationName::brainstormWindowWillResize());
    world.ledger().clear();
    for (auto const& id : { std::string("nobody"), std::string(), std::string("b1\0", 3), std::string("b1\n") }) {
        Preferred payload { id, false };
        payload.preferredHeight = 300;
        request(payload);
    }
    EXPECT_TRUE(will.heard.empty());
    EXPECT_TRUE(ledger().empty());
}

TEST_F(Resizing, ARequestWithoutAWindowIdIsDropped)
{
    world.ledger().clear();
    post(NotificationName::brainstormWindowPreferredHeightDidChange(), { { "preferredHeight", 300.0 } });
    platform::NotificationCenter::defaultCenter().post(
        { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, {} });
    EXPECT_TRUE(ledger().empty());
    EXPECT_EQ(panel->frame().height, 91);
}

TEST_F(Resizing, TheSameNumbersAgainAreANewRequest)
{
    Hearer const did(NotificationName::brainstormWindowDidResize());
    request(toHeight(300));
    request(toHeight(300));
    EXPECT_EQ(did.heard.size(), 2u);
}

TEST_F(Resizing, LimitsAloneRepeatedAreOneRequest)
{
    Hearer const did(NotificationName::brainstormWindowDidResize());
    Preferred limits { "b1", false };
    limits.maxHeight = 400;
    request(limits);
    request(limits);
    EXPECT_EQ(did.heard.size(), 1u);
}

TEST_F(Resizing, APreferredSizeIsAppliedOnceAndLimitsEachTime)
{
    request(toHeight(300));
    panel->setFrame({ 320, 84, 640, 200 }, platform::Display::Yes);
    // Another window rebuilds the pipelines; focus makes the new one speak with the old request.
    auto const settings = world.makeWindow("s", tag("settings", "s1"));
    settings->show();
    panel->becomeKey();
    world.advance(Seconds { 1 });
    EXPECT_EQ(panel->frame().height, 200);
}

TEST_F(Resizing, AReopenedWindowAppliesTheRepeatedSizeAgain)
{
    request(toHeight(300));
    panel->close();
    auto const reopened = showBrainstorm("b1");
    world.advance(Seconds { 1 });
    EXPECT_EQ(reopened->frame().height, 300);
}

TEST_F(Resizing, AnObserverMayAskAgainFromInsideWillResize)
{
    std::vector<double> order;
    platform::Observation const will(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const& notification) {
            order.push_back(BrainstormWindowResize::from(notification)->height);
            if (order.size() == 1)
                request(toHeight(400));
        });
    request(toHeight(300));
    EXPECT_EQ(order, (std::vector<double> { 300, 400 }));
    EXPECT_EQ(panel->frame().height, 400);
}

TEST_F(Resizing, AnObserverMayCloseTheWindowFromInsideDidResize)
{
    platform::Observation const did(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowDidResize(), nullptr, {} }, [&](auto const&) { panel->close(); });
    request(toHeight(300));
    EXPECT_FALSE(panel->isVisible());
    request(toHeight(400));
    EXPECT_EQ(panel->frame().height, 300);
}

TEST_F(Resizing, AnObserverMayOpenAnotherWindowFromInsideWillResize)
{
    std::shared_ptr<backends::MemoryWindow> other;
    Hearer const did(NotificationName::brainstormWindowDidResize());
    platform::Observation const will(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const&) {
            if (!other)
                other = showBrainstorm("b2");
        });
    request(toHeight(300, true));
    world.advance(Seconds { 2 });
    EXPECT_EQ(panel->frame().height, 300);
    EXPECT_FALSE(did.heard.empty());
    EXPECT_TRUE(other->isVisible());
}

TEST_F(Resizing, AnObserverMayEndTheManagerFromInsideWillResize)
{
    Hearer const did(NotificationName::brainstormWindowDidResize());
    platform::Observation const will(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const&) { manager = nullptr; });
    request(toHeight(300));
    EXPECT_EQ(panel->frame().height, 300);
    EXPECT_EQ(did.heard.size(), 1u);
}

TEST_F(Resizing, ClosingInMidAnimationEndsItAndStillReportsTheEnd)
{
    Hearer const did(NotificationName::brainstormWindowDidResize());
    request(toHeight(300, true));
    world.advance(Seconds { 0.1 });
    auto const reached = panel->frame();
    panel->close();
    EXPECT_TRUE(did.heard.empty());
    world.settle();
    EXPECT_EQ(did.heard.size(), 1u);
    world.advance(Seconds { 1 });
    EXPECT_EQ(panel->frame(), reached);
    EXPECT_EQ(did.heard.size(), 1u);
}

TEST_F(Resizing, BottomAndCentreStayPutAtEveryStepAndTheHeightOnlyGrows)
{
    request(toHeight(720, true));
    auto last = panel->frame().height;
    for (int i = 0; i < 25; ++i) {
        world.advance(Seconds { 0.01 });
        EXPECT_EQ(panel->frame().minY(), 84);
        EXPECT_EQ(panel->frame().midX(), 640);
        EXPECT_GE(panel->frame().height, last);
        last = panel->frame().height;
    }
    EXPECT_EQ(last, 720);
}

TEST_F(Resizing, LiveResizeOfOtherKindsIsIgnored)
{
    Hearer const ended(NotificationName::brainstormWindowDidEndLiveResize());
    auto const settings = world.makeWindow("s", tag("settings", "s1"));
    settings->show();
    settings->startLiveResize();
    settings->endLiveResize({ 0, 0, 500, 500 });
    EXPECT_TRUE(ended.heard.empty());
    panel->startLiveResize();
    panel->endLiveResize({ 10, 20, 700, 222 });
    ASSERT_EQ(ended.heard.size(), 1u);
    EXPECT_EQ(ended.heard[0].userInfo,
        (platform::Dictionary { { "windowID", "b1" }, { "width", 700.0 }, { "height", 222.0 } }));
}

TEST_F(Resizing, PinningFollowsTheHostAndUnknownIdsChangeNothing)
{
    post(NotificationName::brainstormWindowPinStateDidChange(),
        BrainstormWindowPinStateDidChange { "b1", true }.userInfo());
    EXPECT_EQ(panel->level(), platform::windowLevelFloating);
    EXPECT_TRUE(isBrainstormPinned(*panel));
    world.ledger().clear();
    post(NotificationName::brainstormWindowPinStateDidChange(), { { "windowID", "nobody" }, { "isPinned", false } });
    post(NotificationName::brainstormWindowPinStateDidChange(), { { "windowID", "b1" } });
    post(NotificationName::brainstormWindowPinStateDidChange(), { { "windowID", "b1" }, { "isPinned", "no" } });
    post(NotificationName::brainstormWindowPinStateDidChange(), { { "isPinned", false } });
    EXPECT_TRUE(ledger().empty());
    // The same state again is a second call on a floating window, which sinks.
    post(NotificationName::brainstormWindowPinStateDidChange(),
        BrainstormWindowPinStateDidChange { "b1", true }.userInfo());
    EXPECT_EQ(panel->level(), platform::windowLevelNormal);
}

TEST_F(Resizing, TheReservedNamesReachNobody)
{
    auto const before = ledger();
    post(NotificationName::quitApp(), {});
    post(NotificationName::brainstormWindowDidReceiveDrop(), { { "windowID", "b1" } });
    world.advance(Seconds { 1 });
    EXPECT_EQ(ledger(), before);
}

using ResizingDeathTest = Resizing;

TEST_F(ResizingDeathTest, TheHostsRequestsOffTheMainThreadAreFatal)
{
    platform::Notification const notification { NotificationName::openFileURL(), nullptr, {} };
    struct Request {
        void (WindowManager::*handler)(platform::Notification const&);
        platform::NotificationName const& (*name)();
        std::string selector;
    };
    for (auto const& request : std::vector<Request> { { &WindowManager::brainstormWindowPreferredHeightDidChange,
                                                          &NotificationName::brainstormWindowPreferredHeightDidChange,
                                                          "brainstormWindowPreferredHeightDidChange" },
             { &WindowManager::brainstormWindowPinStateDidChange, &NotificationName::brainstormWindowPinStateDidChange,
                 "brainstormWindowPinStateDidChange" },
             { &WindowManager::openFileURL, &NotificationName::openFileURL, "openFileURL" } }) {
        EXPECT_DEATH(std::thread([&] { ((*manager).*request.handler)(notification); }).join(),
            "fatal error: not on the main thread: .*" + request.selector);
        // Posted instead of called, the post names the selector.
        EXPECT_DEATH(std::thread([&] { post(request.name(), {}); }).join(),
            "not on the main thread: PaneweldWindowManager " + request.selector);
    }
}

TEST(ResizeGeometry, HoldsForRandomNumbers)
{
    std::mt19937 random(paneweld_tests::testSeed());
    std::uniform_real_distribution<double> number(-3000, 3000);
    std::bernoulli_distribution coin;
    auto const maybe = [&] { return coin(random) ? std::optional(number(random)) : std::nullopt; };
    for (int i = 0; i < 10000; ++i) {
        ResizeBrainstormWindow const request { "b1", maybe(), maybe(), maybe(), maybe(), {}, false };
        Rect const frame { number(random), number(random), std::abs(number(random)), std::abs(number(random)) };
        auto const geometry = ResizeGeometry::resolve(request, frame);
        auto const target = geometry.targetFrame(frame);
        ASSERT_GE(geometry.target.height, geometry.minSize.height);
        ASSERT_LE(geometry.target.height, std::max(geometry.minSize.height, geometry.maxSize.height));
        ASSERT_GE(target.width, 640);
        ASSERT_LE(target.width, 1280);
        ASSERT_GE(target.height, 44);
        ASSERT_EQ(target.minY(), frame.minY());
        ASSERT_NEAR(target.midX(), frame.midX(), 1e-9);
    }
}

TEST(ResizeBrainstormWindow, IsEqualByAllItsFields)
{
    ResizeBrainstormWindow const request { "b1", 1, 2, 3, 4, platform::UUID::random(), true };
    auto const same = request;
    EXPECT_EQ(request, same);
    EXPECT_EQ(std::hash<ResizeBrainstormWindow> {}(request), std::hash<ResizeBrainstormWindow> {}(same));
    auto other = request;
    other.preferredSizeID = platform::UUID::random();
    EXPECT_NE(request, other);
    other = request;
    other.isAnimated = false;
    EXPECT_NE(request, other);
}
