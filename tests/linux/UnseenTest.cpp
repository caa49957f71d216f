#include "tests/linux/LinuxTest.h"
#include "tests/linux/Sampler.h"

#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"
#include "platform/dispatch/Queue.h"

#include <cmath>
#include <xcb/shape.h>

namespace paneweld_tests {

// Nobody sees a panel before it has its look and its place.
class Unseen : public LinuxTest, public ::testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    bool isAnnounced() const { return std::get<0>(GetParam()); }
    bool isComposited() const { return std::get<1>(GetParam()); }

    // As the plug-in does it: the look at once, the fade-in on the next turn.
    void styleAndFadeIn(platform::NSWindow& panel)
    {
        stylePanel(panel);
        panel.setTitle("Ideas");
        auto const shared = std::static_pointer_cast<platform::NSWindow>(panel.shared_from_this());
        backend->mainQueue().async([this, shared] {
            backend->animationContext().runAnimationGroup(
                [&](auto& group) {
                    group.setDuration(platform::Seconds { 0.06 });
                    shared->animator().setAlphaValue(1);
                },
                [this] { ++m_fadeIns; });
        });
    }

    int m_fadeIns = 0;
};

TEST_P(Unseen, BeforeItHasItsLookAndItsPlace)
{
    constexpr int opens = 12;
    constexpr Geometry end { 320, 800 - 84 - 91, 640, 91 };
    // Inside the window as the toolkit made it, and outside the panel.
    constexpr Geometry madeAt { 100, 100, 400, 300 };
    start(isComposited() ? With::WindowManagerAndCompositor : With::WindowManager);
    onNews = [this](auto const& kind, platform::NSWindow& window) {
        if (kind == "visible")
            styleAndFadeIn(window);
    };
    auto const white = onlooker->screen().white_pixel;
    int samples = 0;
    for (int i = 0; i < opens; ++i) {
        auto const made = toolkit->make({ .geometry = madeAt, .title = R"({"id":"b"})" });
        toolkit->sync();
        Sampler sampler(desktop->display(), made, { madeAt.x + 200, madeAt.y + 150, 1, 1 }, [&](auto const& sample) {
            bool const isSeen = sample.isViewable && (isComposited() ? sample.opacity > 0 : !sample.hasEmptyShape);
            if (isSeen && (sample.geometry != end || !sample.isBorderless || sample.title != "Ideas"))
                return true;
            return sample.pixel == (white & 0xFFFFFF);
        });
        if (isAnnounced())
            ASSERT_TRUE(backend->announceX11Window(made));
        else
            ASSERT_TRUE(pumpUntil([&] { return window(made) != nullptr; }));
        toolkit->map(made);
        ASSERT_TRUE(pumpUntil([&] {
            return m_fadeIns == i + 1 && onlooker->isViewable(made) && onlooker->opacity(made) == 1
                && !onlooker->hasEmptyShape(made);
        }));
        EXPECT_EQ(onlooker->geometry(made), end);
        EXPECT_TRUE(pumpUntil([&] { return onlooker->pixel(end.x + 320, end.y + 45) == (white & 0xFFFFFF); }));
        sampler.stop();
        samples += sampler.samples();
        EXPECT_EQ(sampler.wrongSamples(), 0) << sampler.firstWrong();
        toolkit->destroy(made);
        ASSERT_TRUE(pumpUntil([&] { return window(made) == nullptr; }));
    }
    EXPECT_GT(samples, opens * 5);
}

INSTANTIATE_TEST_SUITE_P(
    EveryRoad, Unseen, ::testing::Combine(::testing::Bool(), ::testing::Bool()), [](auto const& road) {
        return std::string(std::get<0>(road.param) ? "Announced" : "Found")
            + (std::get<1>(road.param) ? "WithCompositor" : "WithoutCompositor");
    });

class Hold : public LinuxTest { };

TEST_F(Hold, LastsWhenAToolkitTakesEveryShapeOff)
{
    start(With::WindowManager);
    // From the first window on this process is known.
    ASSERT_NE(show({ .title = "first" }), nullptr);
    auto const made = toolkit->make({ .title = "second" });
    toolkit->sync();
    auto const takeShapeOff = [&] {
        xcb_shape_mask(toolkit->wire(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, made, 0, 0, XCB_PIXMAP_NONE);
        toolkit->sync();
    };
    // The loop stands still all the while, as it does in a host that is busy.
    auto const isHeld = [&] { return onlooker->hasEmptyShape(made); };
    ASSERT_TRUE(onlooker->waitUntil(isHeld));
    takeShapeOff();
    EXPECT_TRUE(onlooker->waitUntil(isHeld));
    takeShapeOff();
    ASSERT_TRUE(backend->announceX11Window(made));
    EXPECT_TRUE(pumpUntil(isHeld));
    takeShapeOff();
    EXPECT_TRUE(pumpUntil(isHeld));
}

// A toolkit's own wish for a window that lets something through, or its user's.
class OwnOpacity : public LinuxTest {
protected:
    void wish(xcb_window_t id, double opacity)
    {
        toolkit->setWords(id, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL,
            { static_cast<std::uint32_t>(std::lround(opacity * 0xFFFFFFFF)) });
    }

    bool isSeenWith(xcb_window_t id, double opacity)
    {
        return onlooker->isViewable(id) && !onlooker->hasEmptyShape(id)
            && std::abs(onlooker->opacity(id) - opacity) < 0.001;
    }

    void expectSeenWith(xcb_window_t id, double opacity)
    {
        EXPECT_TRUE(pumpUntil([&] { return isSeenWith(id, opacity); })) << onlooker->opacity(id);
        settle();
        EXPECT_TRUE(isSeenWith(id, opacity)) << onlooker->opacity(id);
    }

    void hide(xcb_window_t id)
    {
        toolkit->withdraw(id);
        ASSERT_TRUE(pumpUntil([&] { return onlooker->opacity(id) == 0; }));
    }
};

TEST_F(OwnOpacity, IsKeptWhoeverHoldsTheWindowFirst)
{
    start(With::WindowManager);
    // The first one is found by asking, the next ones at once; where the loop stands still they are held by others.
    for (int i = 0; i < 20; ++i) {
        auto const id = toolkit->make({ .title = "pale" });
        wish(id, 0.5);
        toolkit->sync();
        if (i % 2 != 0) {
            ASSERT_TRUE(onlooker->waitUntil([&] { return onlooker->opacity(id) == 0; }));
        }
        if (i % 4 >= 2) {
            ASSERT_TRUE(backend->announceX11Window(id));
        }
        toolkit->map(id);
        expectSeenWith(id, 0.5);
        hide(id);
        toolkit->map(id);
        expectSeenWith(id, 0.5);
    }
}

TEST_F(OwnOpacity, ThatComesLaterCountsAndShowsNothingEarly)
{
    start(With::WindowManager);
    auto const id = toolkit->make({ .title = "pale" });
    ASSERT_TRUE(pumpUntil([&] { return window(id) && onlooker->opacity(id) == 0; }));
    wish(id, 0.5);
    EXPECT_TRUE(pumpUntil([&] { return onlooker->opacity(id) == 0; }));
    toolkit->map(id);
    expectSeenWith(id, 0.5);
    wish(id, 0.25);
    expectSeenWith(id, 0.25);
    window(id)->setAlphaValue(0.5);
    expectSeenWith(id, 0.125);
    window(id)->setAlphaValue(1);
    expectSeenWith(id, 0.25);
    hide(id);
    toolkit->map(id);
    expectSeenWith(id, 0.25);
    xcb_delete_property(toolkit->wire(), id, toolkit->atom("_NET_WM_WINDOW_OPACITY"));
    toolkit->sync();
    expectSeenWith(id, 1);
    hide(id);
    toolkit->map(id);
    expectSeenWith(id, 1);
}

TEST_F(OwnOpacity, IsGivenBackWhereTheHostIsBusy)
{
    start(With::WindowManager);
    show({ .title = "first" });
    auto const id = toolkit->make({ .title = "pale" });
    wish(id, 0.5);
    toolkit->map(id);
    ASSERT_TRUE(onlooker->waitUntil([&] { return onlooker->opacity(id) == 0; }));
    EXPECT_TRUE(onlooker->waitUntil([&] { return isSeenWith(id, 0.5); }));
    // And when the host has time again.
    ASSERT_TRUE(pumpUntil([&] { return count("visible pale") == 1; }));
    expectSeenWith(id, 0.5);
}

class Compositor : public LinuxTest { };

TEST_F(Compositor, ThatComesAndGoesIsFollowed)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "through" });
    auto const id = xid(shown);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->opacity(id) == 1; }));
    shown->setAlphaValue(0);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->hasEmptyShape(id) && onlooker->opacity(id) == 0; }));
    desktop->startCompositor();
    EXPECT_TRUE(pumpUntil([&] { return !onlooker->hasEmptyShape(id); }));
    desktop->endCompositor();
    EXPECT_TRUE(pumpUntil([&] { return onlooker->hasEmptyShape(id); }));
    shown->setAlphaValue(0.5);
    EXPECT_TRUE(pumpUntil([&] { return !onlooker->hasEmptyShape(id) && onlooker->opacity(id) < 1; }));
    EXPECT_NEAR(onlooker->opacity(id), 0.5, 0.001);
}

} // namespace paneweld_tests
