#include "backends/shared/Animator.h"
#include "tests/support/World.h"

#include <cmath>

using backends::defaultTimingCurve;
using platform::Rect;
using platform::Seconds;

namespace {

class Animation : public World {
protected:
    void run(double duration, std::function<void()> changes, std::string const& name = "done")
    {
        world.animationContext().runAnimationGroup(
            [&](auto& group) {
                group.setDuration(Seconds { duration });
                changes();
            },
            [this, name] { completions.push_back(name); });
    }

    void grow(double height, double duration = 0.25, std::string const& name = "done")
    {
        run(
            duration,
            [&] {
                window->animator().setFrame({ 0, 0, 640, height }, platform::Display::Yes);
            },
            name);
    }

    std::shared_ptr<backends::MemoryWindow> const window = world.makeWindow("w", "w", { 0, 0, 640, 100 });
    std::vector<std::string> completions;
};

} // namespace

TEST_F(Animation, TheDefaultIsAQuarterOfASecond)
{
    world.animationContext().runAnimationGroup(
        [&](auto& group) {
            EXPECT_EQ(group.duration(), Seconds { 0.25 });
            window->animator().setAlphaValue(0);
        },
        [this] { completions.push_back("done"); });
    world.advance(Seconds { 0.24 });
    EXPECT_TRUE(completions.empty());
    world.advance(Seconds { 0.01 });
    EXPECT_EQ(completions.size(), 1u);
    EXPECT_EQ(window->alphaValue(), 0);
}

TEST_F(Animation, AGroupWithoutChangesCompletesWhenItEnds)
{
    run(0.25, [] {});
    EXPECT_EQ(completions.size(), 1u);
}

TEST_F(Animation, AZeroOrImpossibleDurationSetsTheValueAtOnceAndCompletesOnTheNextTurn)
{
    double height = 200;
    for (auto const duration : { 0.0, -1.0, std::nan("") }) {
        completions.clear();
        grow(++height, duration);
        EXPECT_EQ(window->frame().height, height);
        EXPECT_TRUE(completions.empty());
        world.settle();
        EXPECT_EQ(completions.size(), 1u);
    }
}

TEST_F(Animation, AReplacedAnimationDrivesNothingMoreAndCompletesAtItsOwnEnd)
{
    grow(300, 0.25, "first");
    world.advance(Seconds { 0.1 });
    auto const reached = window->frame().height;
    EXPECT_GT(reached, 100);
    grow(150, 0.5, "second");
    EXPECT_EQ(window->frame().height, reached);
    world.advance(Seconds { 0.15 });
    EXPECT_EQ(completions, std::vector<std::string> { "first" });
    EXPECT_LT(window->frame().height, 300);
    world.advance(Seconds { 0.35 });
    EXPECT_EQ(completions, (std::vector<std::string> { "first", "second" }));
    EXPECT_EQ(window->frame().height, 150);
}

TEST_F(Animation, APlainFrameEndsARunningOneWithItsCompletionOnTheNextTurn)
{
    grow(300);
    world.advance(Seconds { 0.1 });
    window->setFrame({ 0, 0, 640, 120 }, platform::Display::Yes);
    EXPECT_TRUE(completions.empty());
    world.settle();
    EXPECT_EQ(completions.size(), 1u);
    world.advance(Seconds { 1 });
    EXPECT_EQ(window->frame().height, 120);
    EXPECT_EQ(completions.size(), 1u);
}

TEST_F(Animation, APlainFrameLeavesAnAlphaAnimationRunning)
{
    window->setAlphaValue(0);
    run(0.25, [&] { window->animator().setAlphaValue(1); });
    window->setFrame({ 0, 0, 640, 120 }, platform::Display::Yes);
    world.advance(Seconds { 0.25 });
    EXPECT_EQ(window->alphaValue(), 1);
}

TEST_F(Animation, AGroupCompletesOnceWhenAllOfItHasArrived)
{
    run(0.25, [&] {
        window->animator().setFrame({ 0, 0, 640, 200 }, platform::Display::Yes);
        window->animator().setAlphaValue(0.5);
    });
    world.advance(Seconds { 1 });
    EXPECT_EQ(completions.size(), 1u);
    EXPECT_EQ(window->alphaValue(), 0.5);
    EXPECT_EQ(window->frame().height, 200);
}

TEST_F(Animation, AChangeOutsideAGroupMakesItsOwn)
{
    window->animator().setAlphaValue(0);
    world.advance(Seconds { 0.25 });
    EXPECT_EQ(window->alphaValue(), 0);
}

TEST_F(Animation, ACompletionMayStartTheNextAnimation)
{
    world.animationContext().runAnimationGroup(
        [&](auto&) {
            window->animator().setFrame({ 0, 0, 640, 200 }, platform::Display::Yes);
        },
        [this] { grow(300); });
    world.advance(Seconds { 0.5 });
    EXPECT_EQ(window->frame().height, 300);
    EXPECT_EQ(completions.size(), 1u);
}

TEST_F(Animation, AWindowThatDiesInMidAnimationStillCompletes)
{
    auto dying = world.makeWindow("d", "d");
    run(0.25, [&] { dying->animator().setAlphaValue(0); });
    world.application().removeWindow(*dying);
    dying = nullptr;
    world.advance(Seconds { 1 });
    EXPECT_EQ(completions.size(), 1u);
}

TEST(TimingCurve, GrowsFromNothingToAllAndIsSteepFirst)
{
    EXPECT_EQ(defaultTimingCurve(-1), 0);
    EXPECT_EQ(defaultTimingCurve(0), 0);
    EXPECT_EQ(defaultTimingCurve(1), 1);
    EXPECT_EQ(defaultTimingCurve(2), 1);
    double last = 0;
    for (int i = 1; i <= 1000; ++i) {
        auto const value = defaultTimingCurve(i / 1000.0);
        ASSERT_GE(value, last);
        last = value;
    }
    // A point of the curve: at t = 0.5 both parts are 1/8 * (3 * p1 + 3 * p2 + 1).
    EXPECT_NEAR(defaultTimingCurve((3 * 0.25 + 3 * 0.25 + 1) / 8), (3 * 0.1 + 3 * 1.0 + 1) / 8, 1e-9);
}
