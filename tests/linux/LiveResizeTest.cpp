#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"

namespace paneweld_tests {

class LiveResizing : public LinuxTest {
protected:
    // A window whose size is looked after, so that dragging its edge is news.
    std::shared_ptr<platform::NSWindow> showSized()
    {
        auto const shown = show({ .geometry = { 200, 200, 400, 300 }, .title = "sized" });
        shown->setContentMinSize({ 200, 100 });
        pumpUntil([&] { return shown->isKeyWindow(); });
        settle();
        return shown;
    }

    // Presses on the lower right corner of the window's frame.
    void grabCorner(xcb_window_t window)
    {
        auto const frame = onlooker->frameOf(window);
        auto const place = onlooker->geometry(frame);
        m_corner = { place.x + place.width - 2, place.bottom() - 2, 0, 0 };
        onlooker->movePointer(m_corner.x, m_corner.y);
        settle();
        onlooker->button(1, true);
        settle();
    }

    // Drags on, to the right and down, until something comes of it: a window manager that is busy takes many steps
    // for one, and the first of them only begins the drag.
    bool dragUntil(std::function<bool()> const& condition)
    {
        return pumpUntil([&, step = 0]() mutable {
            if (condition())
                return true;
            step = step % 60 + 1;
            onlooker->movePointer(m_corner.x + 20 + step, m_corner.y + 20 + step);
            return false;
        });
    }

    Geometry m_corner;
};

TEST_F(LiveResizing, StartsAndEndsOnceForADragOfTheEdge)
{
    start(With::WindowManager);
    auto const shown = showSized();
    auto const before = shown->frame();
    grabCorner(xid(shown));
    EXPECT_EQ(count("resize start sized"), 0);
    ASSERT_TRUE(dragUntil([&] { return count("resize start sized") == 1; }));
    EXPECT_EQ(count("resize end sized"), 0);
    onlooker->button(1, false);
    ASSERT_TRUE(pumpUntil([&] { return count("resize end sized") == 1; }));
    settle();
    EXPECT_EQ(count("resize start sized"), 1);
    EXPECT_EQ(count("resize end sized"), 1);
    auto const now = onlooker->geometry(xid(shown));
    EXPECT_EQ(shown->frame().width, now.width);
    EXPECT_EQ(shown->frame().height, now.height);
    EXPECT_GT(shown->frame().width, before.width);
}

TEST_F(LiveResizing, TheFrameAtItsEndIsTheLastOne)
{
    start(With::WindowManager);
    auto const shown = showSized();
    platform::Rect atEnd;
    onNews = [&](auto const& kind, platform::NSWindow& window) {
        if (kind == "resize end")
            atEnd = window.frame();
    };
    grabCorner(xid(shown));
    // A drag that is over before the window manager begins to resize is none.
    ASSERT_TRUE(dragUntil([&] { return count("resize start sized") == 1; }));
    onlooker->movePointer(m_corner.x + 90, m_corner.y + 70);
    settle();
    onlooker->button(1, false);
    ASSERT_TRUE(pumpUntil([&] { return count("resize end sized") == 1; }));
    auto const now = onlooker->geometry(xid(shown));
    EXPECT_EQ(
        atEnd, (platform::Rect { double(now.x), double(800 - now.bottom()), double(now.width), double(now.height) }));
}

TEST_F(LiveResizing, ADragThatMovesTheWindowIsNone)
{
    start(With::WindowManager);
    auto const shown = showSized();
    auto const frame = onlooker->geometry(onlooker->frameOf(xid(shown)));
    m_corner = { frame.x + frame.width / 2, frame.y + 8, 0, 0 };
    onlooker->movePointer(m_corner.x, m_corner.y);
    onlooker->button(1, true);
    ASSERT_TRUE(dragUntil([&] { return onlooker->geometry(onlooker->frameOf(xid(shown))).x > frame.x + 20; }));
    onlooker->button(1, false);
    settle();
    settle();
    EXPECT_EQ(count("resize start sized"), 0);
}

TEST_F(LiveResizing, OurOwnSizesAndThoseOfOthersWithoutAButtonAreNone)
{
    start(With::WindowManager);
    auto const shown = showSized();
    onlooker->sendToRoot(xid(shown), "_NET_MOVERESIZE_WINDOW", { 10u | 0xFu << 8 | 2u << 12, 50, 60, 320, 240 });
    ASSERT_TRUE(pumpUntil([&] { return shown->frame().width == 320; }));
    // A button held elsewhere while the size is animated.
    onlooker->movePointer(1200, 780);
    onlooker->button(1, true);
    settle();
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            shown->animator().setFrame({ 100, 100, 500, 400 }, platform::Display::Yes);
        },
        [&] { hasEnded = true; });
    ASSERT_TRUE(pumpUntil([&] { return hasEnded && onlooker->geometry(xid(shown)).width == 500; }));
    settle();
    onlooker->button(1, false);
    settle();
    EXPECT_EQ(count("resize start sized"), 0);
}

TEST_F(LiveResizing, AWindowThatNobodySizesIsNotWatched)
{
    start(With::WindowManager);
    auto const shown = show({ .geometry = { 200, 200, 400, 300 }, .title = "plain" });
    auto const before = shown->frame();
    grabCorner(xid(shown));
    ASSERT_TRUE(dragUntil([&] { return shown->frame().width > before.width; }));
    onlooker->button(1, false);
    settle();
    EXPECT_EQ(count("resize start plain"), 0);
}

TEST_F(LiveResizing, EndsBeforeTheWindowCloses)
{
    start(With::WindowManager);
    auto const shown = showSized();
    grabCorner(xid(shown));
    ASSERT_TRUE(dragUntil([&] { return count("resize start sized") == 1; }));
    news.clear();
    toolkit->destroy(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return count("close sized") == 1; }));
    EXPECT_EQ(news.front(), "resize end sized");
    EXPECT_EQ(news.back(), "close sized");
    onlooker->button(1, false);
}

TEST_F(LiveResizing, AMoveByTheBackgroundIsTheWindowManagers)
{
    start(With::WindowManager);
    auto const shown = showSized();
    EXPECT_FALSE(backend->beginMove(xid(shown), 300, 300, 1));
    shown->setMovableByWindowBackground(true);
    auto const before = onlooker->geometry(xid(shown));
    onlooker->movePointer(before.x + 50, before.y + 50);
    onlooker->button(1, true);
    settle();
    EXPECT_TRUE(backend->beginMove(xid(shown), before.x + 50, before.y + 50, 1));
    settle();
    pumpUntil([&] {
        // Away and back: a step that comes before the window manager holds the pointer is lost.
        onlooker->movePointer(before.x + 140, before.y + 80);
        onlooker->movePointer(before.x + 150, before.y + 90);
        settle();
        return onlooker->geometry(xid(shown)).x == before.x + 100;
    });
    onlooker->button(1, false);
    settle();
    EXPECT_EQ(
        onlooker->geometry(xid(shown)), (Geometry { before.x + 100, before.y + 40, before.width, before.height }));
    EXPECT_EQ(count("resize start sized"), 0);
}

} // namespace paneweld_tests
