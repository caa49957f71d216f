#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "tests/support/X11Stage.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace paneweld;

namespace {

// A panel of the plug-in that is at work when something around it breaks.
class Faults : public X11Stage {
protected:
    void open(With with)
    {
        testing::internal::CaptureStderr();
        start(with);
        controller = AppKitController::create(*backend);
        panel = show(WindowIdentifier::create("b1", "brainstorm", "Panel")->encoded());
        pumpUntil([&] { return panel->alphaValue() >= 1 && panel->frame().height == 91; });
        settle();
        place = onlooker->geometry(xid(panel));
    }

    void TearDown() override
    {
        // A server's word about a window that went is no error; everything else would be ours.
        auto const said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(said.find(":x11 "), std::string::npos) << said;
    }

    void request(double height, bool animate = true)
    {
        BrainstormWindowPreferredHeightDidChange payload { "b1", animate };
        payload.preferredHeight = height;
        payload.maxHeight = 600;
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, payload.userInfo() });
    }

    // An animation that has begun to move the window.
    void beginToGrow()
    {
        request(400);
        ASSERT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(panel)).height > place.height; }));
    }

    bool isSeen(xcb_window_t window)
    {
        return onlooker->isViewable(window) && onlooker->opacity(window) == 1 && !onlooker->hasEmptyShape(window);
    }

    // As if nothing had been.
    void expectPanelAtWork(int height)
    {
        auto const isThere = [&] {
            auto const now = onlooker->geometry(xid(panel));
            return now.height == height && now.bottom() == place.bottom()
                && now.doubledCentre() == place.doubledCentre() && isSeen(xid(panel))
                && panel->frame().height == height;
        };
        EXPECT_TRUE(pumpUntil(isThere)) << onlooker->geometry(xid(panel)).height;
    }

    struct Hearer {
        Hearer()
            : observation(platform::NotificationCenter::defaultCenter(),
                { NotificationName::brainstormWindowDidResize(), nullptr, {} }, [this](auto const&) { ++count; })
        {
        }
        Hearer(Hearer const&) = delete;

        int count = 0;
        platform::Observation observation;
    };

    std::shared_ptr<AppKitController> controller;
    std::shared_ptr<platform::NSWindow> panel;
    paneweld_tests::Geometry place;
};

} // namespace

TEST_F(Faults, AWindowManagerThatDiesInAnAnimationAndComesBackChangesNothing)
{
    open(With::WindowManager);
    Hearer const resizes;
    beginToGrow();
    desktop->endWindowManager();
    EXPECT_TRUE(pumpUntil([&] { return resizes.count == 1; }));
    request(200, false);
    EXPECT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(panel)).height == 200; })) << "without a manager";
    desktop->startWindowManager();
    expectPanelAtWork(200);
    request(300);
    expectPanelAtWork(300);
}

TEST_F(Faults, AWindowThatIsDestroyedInAnAnimationStillEndsItsReports)
{
    open(With::WindowManagerAndCompositor);
    Hearer const resizes;
    beginToGrow();
    toolkit->destroy(xid(panel));
    EXPECT_TRUE(pumpUntil([&] { return resizes.count == 1; }));
    request(500);
    settle();
    // The same panel opens anew, and what was wished for it meanwhile holds.
    panel = show(WindowIdentifier::create("b1", "brainstorm", "Panel")->encoded());
    expectPanelAtWork(500);
    EXPECT_EQ(resizes.count, 2);
}

TEST_F(Faults, ALoopThatStallsEndsItsAnimationWhereItShould)
{
    open(With::WindowManager);
    Hearer const resizes;
    beginToGrow();
    std::this_thread::sleep_until(std::chrono::steady_clock::now() + std::chrono::milliseconds(1500));
    onlooker->watch(xid(panel));
    onlooker->clear();
    EXPECT_TRUE(pumpUntil([&] { return resizes.count == 1; }));
    expectPanelAtWork(400);
    // What it has missed is left out and not played faster.
    auto const seen = onlooker->geometries();
    EXPECT_LE(std::count_if(seen.begin(), seen.end(), [](auto const& one) { return one.height < 400; }), 1);
}

TEST_F(Faults, ACompositorThatDiesLeavesNoWindowUnseen)
{
    open(With::WindowManagerAndCompositor);
    auto const second = toolkit->make({ .title = WindowIdentifier::create("b2", "brainstorm", "Other")->encoded() });
    toolkit->map(second);
    // In the middle of its fade-in.
    ASSERT_TRUE(pumpUntil([&] { return onlooker->isViewable(second) && onlooker->opacity(second) > 0; }));
    desktop->endCompositor();
    EXPECT_TRUE(pumpUntil([&] { return isSeen(second) && isSeen(xid(panel)); }));
    // A request is heard by the window that faded in last.
    makeKey(*panel);
    beginToGrow();
    desktop->startCompositor();
    expectPanelAtWork(400);
    EXPECT_TRUE(pumpUntil([&] { return isSeen(second); }));
}

TEST_F(Faults, WindowsThatVanishBeforeAnyoneLooksLeaveNothing)
{
    open(With::WindowManager);
    for (int i = 0; i < 200; ++i) {
        auto const brief = toolkit->make({ .title = WindowIdentifier::create("x", "brainstorm", "Brief")->encoded() });
        if (i % 3 == 0)
            backend->announceX11Window(brief);
        toolkit->map(brief);
        // Now and then the event is read before the window goes.
        if (i % 2 == 0)
            backend->dispatch();
        toolkit->destroy(brief);
    }
    EXPECT_TRUE(pumpUntil([&] { return backend->application().windows().size() == 1; }));
    // A request is heard by the window that was shown last.
    withdraw(*panel);
    showAgain(*panel);
    request(250);
    expectPanelAtWork(250);
}

TEST_F(Faults, AHostThatRefusesToCloseKeepsItsPanelAsItWas)
{
    open(With::WindowManager);
    toolkit->closesWhenAsked = false;
    makeKey(*panel);
    EXPECT_FALSE(pressEscape());
    EXPECT_TRUE(pumpUntil([&] { return toolkit->closeRequests == 1; }));
    beginToGrow();
    expectPanelAtWork(400);
    EXPECT_EQ(count("close Panel"), 0);
}
