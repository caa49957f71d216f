#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"

namespace paneweld_tests {

using platform::Display;
using platform::Rect;

// A window that its host hides and shows again is where its user left it.
class Returning : public LinuxTest {
protected:
    void moveAsAUser(xcb_window_t id, Geometry const& place)
    {
        constexpr std::uint32_t allSidesStatic = 10 | 0xF << 8 | 2 << 12;
        toolkit->sendToRoot(id, "_NET_MOVERESIZE_WINDOW",
            { allSidesStatic, static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
                static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height) });
        ASSERT_TRUE(pumpUntil([&] { return onlooker->geometry(id) == place && isAtRest(id); }));
    }

    // The backend knows where it is, and awaits nothing.
    bool isAtRest(xcb_window_t id)
    {
        auto const place = onlooker->geometry(id);
        return window(id)->frame()
            == Rect { double(place.x), double(800 - place.bottom()), double(place.width), double(place.height) };
    }

    void hide(xcb_window_t id)
    {
        auto const before = count("close left");
        toolkit->withdraw(id);
        ASSERT_TRUE(pumpUntil([&] { return count("close left") == before + 1 && onlooker->opacity(id) == 0; }));
        // The window manager takes away what it wrote on the window, and would take what is written meanwhile too.
        ASSERT_TRUE(
            pumpUntil([&] { return !onlooker->words(id, "WM_STATE") && !onlooker->words(id, "_NET_WM_STATE"); }));
    }

    void bringBack(xcb_window_t id)
    {
        toolkit->map(id);
        ASSERT_TRUE(pumpUntil([&] { return onlooker->isViewable(id) && onlooker->opacity(id) == 1; }));
        settle();
    }
};

TEST_F(Returning, IsWhereItsUserLeftIt)
{
    start(With::WindowManager);
    for (bool const isBorderless : { false, true }) {
        auto const shown = show({ .title = "left" });
        if (isBorderless)
            stylePanel(*shown);
        shown->setAlphaValue(1);
        shown->setFrame({ 320, 60, 640, 300 }, Display::No);
        auto const id = xid(shown);
        ASSERT_TRUE(pumpUntil([&] { return isAtRest(id); }));
        // What is still on its way is waited for, as a user does.
        pumpFor(std::chrono::milliseconds(300));
        Geometry const left { 100, 150, 500, 250 };
        moveAsAUser(id, left);
        for (int i = 0; i < 3; ++i) {
            hide(id);
            bringBack(id);
            EXPECT_EQ(onlooker->geometry(id), left) << (isBorderless ? "borderless " : "decorated ") << i;
        }
        // What is asked for meanwhile counts.
        hide(id);
        shown->setFrame({ 200, 100, 400, 350 }, Display::No);
        bringBack(id);
        EXPECT_EQ(onlooker->geometry(id), (Geometry { 200, 350, 400, 350 }));
        toolkit->destroy(id);
        ASSERT_TRUE(pumpUntil([&] { return window(id) == nullptr; }));
    }
}

TEST_F(Returning, IsAsLargeAsTheScreenIfItWas)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "left" });
    shown->setFrame({ 320, 60, 640, 300 }, Display::No);
    auto const id = xid(shown);
    ASSERT_TRUE(pumpUntil([&] { return isAtRest(id); }));
    pumpFor(std::chrono::milliseconds(300));
    auto const vertically = toolkit->atom("_NET_WM_STATE_MAXIMIZED_VERT");
    auto const across = toolkit->atom("_NET_WM_STATE_MAXIMIZED_HORZ");
    constexpr std::uint32_t add = 1;
    toolkit->sendToRoot(id, "_NET_WM_STATE", { add, vertically, across, 1 });
    ASSERT_TRUE(pumpUntil(
        [&] { return onlooker->geometry(id).x == 0 && onlooker->geometry(id).width > 1000 && isAtRest(id); }));
    auto const large = onlooker->geometry(id);
    hide(id);
    // As toolkits do, it says so again.
    toolkit->setWords(id, "_NET_WM_STATE", XCB_ATOM_ATOM, { vertically, across });
    bringBack(id);
    EXPECT_EQ(onlooker->geometry(id), large);
    EXPECT_TRUE(onlooker->hasState(id, "_NET_WM_STATE_MAXIMIZED_VERT"));
    // Or it makes it smaller again, to what only it knows.
    hide(id);
    toolkit->setWords(id, "_NET_WM_STATE", XCB_ATOM_ATOM, {});
    std::uint32_t const smaller[] { 500, 250 };
    xcb_configure_window(toolkit->wire(), id, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, smaller);
    bringBack(id);
    EXPECT_EQ(onlooker->geometry(id).width, 500);
    EXPECT_EQ(onlooker->geometry(id).height, 250);
}

} // namespace paneweld_tests
