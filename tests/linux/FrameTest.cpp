#include "tests/linux/LinuxTest.h"
#include "tests/linux/SlowManager.h"
#include "tests/support/RunOptions.h"

#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSScreen.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace paneweld_tests {

using platform::Display;
using platform::Rect;
using namespace std::chrono_literals;

class Frames : public LinuxTest {
protected:
    static void makeBorderless(platform::NSWindow& window)
    {
        window.setTitlebarAppearsTransparent(true);
        window.setTitleVisibility(platform::TitleVisibility::Hidden);
        window.setStyleMask(window.styleMask() | platform::styleMaskFullSizeContentView);
    }

    // At rest: what was asked for has been answered.
    void rest(platform::NSWindow& window)
    {
        auto const id = *backend->x11Window(window);
        auto const target = window.frame();
        pumpUntil([&] {
            auto const now = onlooker->geometry(id);
            return now.width == std::lround(target.width) && now.height == std::lround(target.height)
                && now.x == std::floor(target.x) && 800 - now.bottom() == std::lround(target.y);
        });
        settle();
    }

    Rect grownAtTop(platform::NSWindow const& window, double height)
    {
        auto frame = window.frame();
        frame.height = height;
        return frame;
    }

    // Asks for so many heights, four at a time, and looks at every step that the window takes on the way. A busy
    // machine makes one step of many requests; what is missing of the least is asked for one by one.
    void expectStillThrough(int requests, std::size_t leastSteps, platform::NSWindow& window, std::mt19937& random)
    {
        auto const id = *backend->x11Window(window);
        auto const first = onlooker->geometry(onlooker->frameOf(id));
        onlooker->watch(id);
        onlooker->clear();
        std::uniform_int_distribution<int> height(91, 640);
        auto const ask = [&] { window.setFrame(grownAtTop(window, height(random)), Display::Yes); };
        for (int i = 0; i < requests; ++i) {
            ask();
            if (i % 4 == 0)
                settle();
        }
        rest(window);
        for (std::size_t i = 0; i < leastSteps && onlooker->geometries().size() <= leastSteps; ++i) {
            ask();
            rest(window);
        }
        auto const steps = onlooker->geometries();
        EXPECT_GT(steps.size(), leastSteps);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            ASSERT_EQ(steps[i].bottom(), first.bottom()) << "step " << i << " of height " << steps[i].height;
            ASSERT_EQ(steps[i].doubledCentre(), first.doubledCentre()) << "step " << i;
        }
    }

    void expectBottomAndCentreNeverMove(bool isBorderless, std::vector<std::string> const& manager)
    {
        start(With::Nothing);
        if (!manager.empty())
            startWindowManager(manager);
        auto const shown = show({ .title = "still" });
        if (isBorderless)
            makeBorderless(*shown);
        shown->setFrame({ 320, 60, 640, 91 }, Display::No);
        rest(*shown);
        std::mt19937 random(paneweld_tests::testSeed());
        expectStillThrough(1000, 200, *shown, random);
    }
};

TEST_F(Frames, BottomAndCentreOfADecoratedWindowNeverMove) { expectBottomAndCentreNeverMove(false, { "openbox" }); }

TEST_F(Frames, BottomAndCentreOfABorderlessWindowNeverMove) { expectBottomAndCentreNeverMove(true, { "openbox" }); }

TEST_F(Frames, BottomAndCentreOfADecoratedWindowNeverMoveUnderXfwm)
{
    expectBottomAndCentreNeverMove(false, { "xfwm4", "--compositor=off" });
}

TEST_F(Frames, BottomAndCentreOfADecoratedWindowNeverMoveUnderMetacity)
{
    expectBottomAndCentreNeverMove(false, { "metacity", "--sm-disable", "--no-composite" });
}

TEST_F(Frames, BottomAndCentreNeverMoveWithoutAWindowManager) { expectBottomAndCentreNeverMove(true, {}); }

TEST_F(Frames, BottomAndCentreStayWhereAChangeOfTheExtentsHasPutThem)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "dressed and undressed" });
    auto const id = xid(shown);
    std::mt19937 random(7);
    // An application says by itself whether it wants a frame, and may change its mind.
    constexpr std::uint32_t decorationsAreSaid = 2;
    for (std::uint32_t round = 0; round < 10; ++round) {
        shown->setFrame({ 320, 60, 640, 91 }, Display::No);
        rest(*shown);
        bool const isDressed = round % 2 == 1;
        toolkit->setWords(id, "_MOTIF_WM_HINTS", toolkit->atom("_MOTIF_WM_HINTS"),
            { decorationsAreSaid, 0, isDressed ? 1u : 0u, 0, 0 });
        ASSERT_TRUE(pumpUntil([&] {
            auto const extents = onlooker->words(id, "_NET_FRAME_EXTENTS");
            return extents && extents->size() == 4 && ((*extents)[2] != 0) == isDressed;
        })) << round;
        // What is asked for holds for a moment whatever happens; then the window is where the window manager put it.
        EXPECT_TRUE(pumpUntil([&] { return 800 - shown->frame().y == onlooker->geometry(id).bottom(); }));
        settle();
        SCOPED_TRACE("round " + std::to_string(round));
        expectStillThrough(100, 5, *shown, random);
    }
}

TEST_F(Frames, AnAnimationTakesOneStepAFrameUpwardsAndEndsExactly)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "grows" });
    auto const id = xid(shown);
    makeBorderless(*shown);
    shown->setFrame({ 320, 40, 640, 91 }, Display::No);
    rest(*shown);
    onlooker->watch(id);
    auto const begin = backend->clock().now();
    std::optional<platform::Seconds> duration;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            shown->animator().setFrame({ 300, 40, 680, 720 }, Display::Yes);
        },
        [&] { duration = backend->clock().now() - begin; });
    ASSERT_TRUE(pumpUntil([&] { return duration.has_value(); }));
    EXPECT_EQ(shown->frame(), (Rect { 300, 40, 680, 720 }));
    rest(*shown);
    EXPECT_GE(duration->count(), 0.25);
    auto steps = onlooker->geometries();
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    ASSERT_FALSE(steps.empty());
    EXPECT_GE(steps.size(), 5u);
    EXPECT_LE(steps.size(), static_cast<std::size_t>(duration->count() * 60) + 2);
    for (std::size_t i = 1; i < steps.size(); ++i) {
        EXPECT_GE(steps[i].height, steps[i - 1].height);
        EXPECT_GE(steps[i].width, steps[i - 1].width);
    }
    for (auto const& step : steps) {
        EXPECT_EQ(step.bottom(), 760);
        EXPECT_EQ(step.doubledCentre(), 1280);
    }
    EXPECT_EQ(steps.back(), (Geometry { 300, 40, 680, 720 }));
    onlooker->clear();
    settle();
    EXPECT_TRUE(onlooker->geometries().empty());
}

TEST_F(Frames, ASetFrameEndsAnAnimationAndNothingComesAfter)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "stops" });
    shown->setFrame({ 100, 100, 400, 100 }, Display::No);
    rest(*shown);
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            shown->animator().setFrame({ 100, 100, 400, 600 }, Display::Yes);
        },
        [&] { hasEnded = true; });
    ASSERT_TRUE(pumpUntil([&] { return shown->frame().height > 150; }));
    shown->setFrame({ 200, 100, 300, 120 }, Display::Yes);
    EXPECT_FALSE(hasEnded);
    ASSERT_TRUE(pumpUntil([&] { return hasEnded; }));
    rest(*shown);
    EXPECT_EQ(shown->frame(), (Rect { 200, 100, 300, 120 }));
}

TEST_F(Frames, TheTargetHoldsUntilAnotherAnswerSupersedesIt)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "moved" });
    Rect const target { 200.25, 150, 401, 203 };
    shown->setFrame(target, Display::Yes);
    EXPECT_EQ(shown->frame(), target);
    rest(*shown);
    settle();
    // The number that was set, not the one that was rounded.
    EXPECT_EQ(shown->frame(), target);
    // Somebody else moves it.
    onlooker->sendToRoot(xid(shown), "_NET_MOVERESIZE_WINDOW", { 10u | 0xFu << 8 | 2u << 12, 50, 60, 320, 240 });
    EXPECT_TRUE(pumpUntil([&] { return shown->frame() == Rect { 50, 800 - 60 - 240, 320, 240 }; }));
}

TEST_F(Frames, TheTargetHoldsWhileEarlierRequestsAreBeingAnswered)
{
    start(With::Nothing);
    auto const shown = show({ .title = "patient" });
    makeBorderless(*shown);
    shown->setFrame({ 320, 60, 640, 91 }, Display::No);
    rest(*shown);
    SlowManager manager(desktop->display());
    // Each sooner than one alone would be given up, all of them together later.
    constexpr std::size_t requests = 8;
    constexpr auto pause = 80ms;
    for (std::size_t i = 1; i <= requests; ++i) {
        shown->setFrame(grownAtTop(*shown, 91 + 40.0 * static_cast<double>(i)), Display::No);
        ASSERT_TRUE(pumpUntil([&] { return manager.look() == i; }));
    }
    Rect const target { 320, 60, 640, 91 + 40.0 * requests };
    for (auto left = requests; left > 0; --left) {
        pumpFor(pause);
        EXPECT_EQ(shown->frame(), target) << left << " left";
        manager.answer();
        settle();
        EXPECT_EQ(shown->frame(), target) << left << " left";
    }
    EXPECT_EQ(onlooker->geometry(xid(shown)), (Geometry { 320, 800 - 60 - 411, 640, 411 }));
    EXPECT_EQ(manager.look(), 0u) << "nothing is asked again";
}

TEST_F(Frames, AWindowManagerThatRefusesIsBelieved)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "fullscreen" });
    onlooker->sendToRoot(xid(shown), "_NET_WM_STATE", { 1, onlooker->atom("_NET_WM_STATE_FULLSCREEN"), 0, 2 });
    ASSERT_TRUE(pumpUntil([&] { return shown->frame() == Rect { 0, 0, 1280, 800 }; }));
    shown->setFrame({ 10, 20, 300, 200 }, Display::Yes);
    EXPECT_EQ(shown->frame(), (Rect { 10, 20, 300, 200 }));
    EXPECT_TRUE(pumpUntil([&] { return shown->frame() == Rect { 0, 0, 1280, 800 }; }));
}

TEST_F(Frames, ARequestThatChangesNoPixelSendsNothing)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "quiet" });
    shown->setFrame({ 100, 100, 400, 200 }, Display::No);
    rest(*shown);
    settle();
    onlooker->watch(xid(shown));
    shown->setFrame({ 100, 100, 400, 200 }, Display::Yes);
    shown->setFrame({ 100, 100, 400.25, 200.25 }, Display::Yes);
    settle();
    settle();
    EXPECT_TRUE(onlooker->entries().empty());
}

TEST_F(Frames, ShadowsOfTheToolkitAreNoPartOfTheFrame)
{
    start(With::WindowManager);
    auto const shown = show({ .geometry = { 100, 100, 452, 361 }, .title = "shadow" });
    toolkit->setWords(xid(shown), "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, { 26, 26, 23, 29 });
    ASSERT_TRUE(pumpUntil([&] { return shown->frame().width == 400; }));
    EXPECT_EQ(shown->frame().height, 361 - 23 - 29);
    shown->setFrame({ 200, 150, 500, 250 }, Display::Yes);
    ASSERT_TRUE(pumpUntil([&] {
        return onlooker->geometry(xid(shown)) == Geometry { 200 - 26, 800 - 150 - 250 - 23, 552, 302 };
    }));
    EXPECT_EQ(shown->frame(), (Rect { 200, 150, 500, 250 }));
    shown->setContentMinSize({ 300, 200 });
    ASSERT_TRUE(pumpUntil([&] {
        auto const hints = onlooker->words(xid(shown), "WM_NORMAL_HINTS");
        return hints && (*hints)[5] == 352 && (*hints)[6] == 252;
    }));
}

TEST_F(Frames, LimitsAreToldAndKeptAgainstTheToolkit)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "limits" });
    auto const id = xid(shown);
    shown->setFrame({ 100, 100, 700, 300 }, Display::No);
    rest(*shown);
    shown->setContentMinSize({ 640, 91 });
    shown->setContentMaxSize({ 1280, 1440 });
    EXPECT_EQ(shown->contentMinSize(), (platform::Size { 640, 91 }));
    EXPECT_EQ(shown->contentMaxSize(), (platform::Size { 1280, 1440 }));
    auto const areTold = [&] {
        auto const hints = onlooker->words(id, "WM_NORMAL_HINTS");
        return hints && ((*hints)[0] & 48) == 48
            && std::vector<std::uint32_t>(hints->begin() + 5, hints->begin() + 9)
            == std::vector<std::uint32_t> { 640, 91, 1280, 1440 };
    };
    ASSERT_TRUE(pumpUntil(areTold));
    EXPECT_TRUE(shown->contentView());
    // A window that cannot be resized, as toolkits say it, with a field that is nobody's business here.
    std::vector<std::uint32_t> hints(18);
    hints[0] = 16 | 32 | 256;
    hints[5] = hints[7] = 700;
    hints[6] = hints[8] = 300;
    hints[15] = 7;
    toolkit->setWords(id, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, hints);
    ASSERT_TRUE(pumpUntil(areTold));
    EXPECT_EQ((*onlooker->words(id, "WM_NORMAL_HINTS"))[15], 7u);
    EXPECT_EQ((*onlooker->words(id, "WM_NORMAL_HINTS"))[0] & 256, 256u);
    shown->setFrame({ 100, 100, 800, 500 }, Display::Yes);
    rest(*shown);
    // Limits that cross: the minimum wins.
    shown->setContentMinSize({ 640, 500 });
    shown->setContentMaxSize({ 1280, 400 });
    EXPECT_TRUE(pumpUntil([&] {
        auto const now = onlooker->words(id, "WM_NORMAL_HINTS");
        return now && (*now)[6] == 500 && (*now)[8] == 500;
    }));
}

TEST_F(Frames, AFrameThatIsSetIsNotBoundByTheLimits)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "free" });
    shown->setContentMinSize({ 100, 91 });
    shown->setContentMaxSize({ 800, 400 });
    shown->setFrame({ 100, 100, 400, 44 }, Display::Yes);
    rest(*shown);
    EXPECT_EQ(onlooker->geometry(xid(shown)).height, 44);
    shown->setFrame({ 100, 100, 900, 500 }, Display::Yes);
    rest(*shown);
    EXPECT_EQ(onlooker->geometry(xid(shown)).width, 900);
}

TEST_F(Frames, AnimatedGrowthIntoNewLimitsKeepsTheBottomStill)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "raised" });
    auto const id = xid(shown);
    shown->setFrame({ 100, 100, 640, 91 }, Display::No);
    rest(*shown);
    auto const bottom = onlooker->geometry(onlooker->frameOf(id)).bottom();
    onlooker->watch(id);
    shown->setContentMinSize({ 640, 500 });
    shown->setContentMaxSize({ 1280, 1440 });
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            shown->animator().setFrame({ 100, 100, 640, 500 }, Display::Yes);
        },
        [&] { hasEnded = true; });
    ASSERT_TRUE(pumpUntil([&] { return hasEnded; }));
    rest(*shown);
    auto const steps = onlooker->geometries();
    EXPECT_GE(steps.size(), 5u);
    for (auto const& step : steps)
        ASSERT_EQ(step.bottom(), bottom);
    EXPECT_TRUE(pumpUntil([&] { return (*onlooker->words(id, "WM_NORMAL_HINTS"))[6] == 500; }));
}

TEST_F(Frames, AFrameSetBeforeMappingIsWhereTheWindowComes)
{
    start(With::WindowManager);
    onNews = [](auto const& kind, platform::NSWindow& window) {
        if (kind == "visible")
            window.setFrame({ 333, 222, 444, 111 }, Display::No);
    };
    auto const made = toolkit->make({ .title = "placed" });
    toolkit->sync();
    ASSERT_TRUE(backend->announceX11Window(made));
    EXPECT_EQ(window(made)->frame(), (Rect { 333, 222, 444, 111 }));
    // As toolkits do, the hints are written once more right before mapping.
    toolkit->setWords(made, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, std::vector<std::uint32_t>(18));
    toolkit->map(made);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->isViewable(made) && onlooker->opacity(made) == 1; }));
    EXPECT_EQ(onlooker->geometry(made), (Geometry { 333, 800 - 222 - 111, 444, 111 }));
}

} // namespace paneweld_tests
