#include "tests/linux/MenuFixture.h"

#include "backends/linux/x11/Handles.h"

#include <poll.h>

namespace paneweld_tests {

using backends::PixelRect;
using backends::XHandle;

// What a menu looks like, and what a pointer does with it.
class Menu : public MenuTest {
protected:
    Menu() { fillMenu(); }

    // A window of somebody else over the whole screen, below the menu, that counts what its buttons do.
    void spreadForeignWindow()
    {
        m_foreign = xcb_generate_id(other.wire());
        std::uint32_t const values[] { 1, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE };
        xcb_create_window(other.wire(), XCB_COPY_FROM_PARENT, m_foreign, other.root(), 0, 0, 1280, 800, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(other.wire(), m_foreign);
        other.sync();
    }
    int foreignButtonEvents()
    {
        other.sync();
        int count = 0;
        while (XHandle<xcb_generic_event_t> const event { xcb_poll_for_event(other.wire()) }) {
            auto const type = event->response_type & 0x7F;
            count += type == XCB_BUTTON_PRESS || type == XCB_BUTTON_RELEASE;
        }
        return count;
    }

    xcb_window_t m_foreign = XCB_WINDOW_NONE;
};

TEST_F(Menu, OpensBelowAnIconAtTheTopAsAMenuThatNoWindowManagerTouches)
{
    open();
    EXPECT_EQ(place().x, icon.x);
    EXPECT_EQ(place().y, icon.bottom());
    EXPECT_EQ(other.words(window(), "_NET_WM_WINDOW_TYPE"),
        (std::vector<std::uint32_t> { other.atom("_NET_WM_WINDOW_TYPE_POPUP_MENU") }));
    EXPECT_EQ(other.text(window(), "_NET_WM_NAME"), "Menu");
    XHandle<xcb_get_window_attributes_reply_t> const attributes(
        xcb_get_window_attributes_reply(other.wire(), xcb_get_window_attributes(other.wire(), window()), nullptr));
    EXPECT_TRUE(attributes->override_redirect);
    EXPECT_EQ(highlightedRow(), std::nullopt);
    popUp->close();
    EXPECT_FALSE(popUp->isOpen());
    expectClosed();
    EXPECT_EQ(actions, Texts {});
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(Menu, OpensAboveAnIconAtTheBottomAndInsideTheRightEdge)
{
    open({ 1250, 774, 24, 24 });
    EXPECT_EQ(place().bottom(), 774);
    EXPECT_EQ(place().x + place().width, 1280);
}

TEST_F(Menu, StaysOnTheMonitorOfItsIcon)
{
    for (auto const& [name, area] :
        { std::pair { "left", "640/160x500/130+0+0" }, { "right", "640/160x800/200+640+0" } }) {
        ChildProcess xrandr({ "xrandr", "--setmonitor", name, area, "none" });
        while (xrandr.isRunning())
            poll(nullptr, 0, 5);
    }
    ASSERT_TRUE(pumpUntil([&] { return screen->monitorAt({ 10, 10, 1, 1 }) == PixelRect { 0, 0, 640, 500 }; }));
    open({ 610, 470, 24, 24 });
    EXPECT_EQ(place().x + place().width, 640);
    EXPECT_EQ(place().bottom(), 470);
    open({ 640, 470, 24, 24 });
    EXPECT_EQ(place().x, 640);
    EXPECT_EQ(place().y, 494);
}

TEST_F(Menu, IsAsLargeAsTheScaleSays)
{
    open();
    auto const plain = place();
    for (double const scale : { 1.25, 1.5, 2.0 }) {
        popUp->close();
        setScale(scale);
        open();
        // Letters have whole pixels.
        EXPECT_NEAR(place().height, plain.height * scale, 10 * scale) << scale;
        EXPECT_NEAR(place().width, plain.width * scale, 20 * scale) << scale;
        clickRow(newRow);
    }
    EXPECT_EQ(actions, (Texts { "new", "new", "new" }));
}

TEST_F(Menu, FollowsTheDesktopsThemeAndFont)
{
    open();
    auto const plain = place();
    EXPECT_EQ(background(), 0xFCFCFCu);
    popUp->close();
    setTheme("Adwaita-dark", "Sans 16");
    open();
    EXPECT_EQ(background(), 0x303030u);
    EXPECT_GT(place().height, plain.height * 5 / 4);
    user.movePointer(middleOf(openRow).x, middleOf(openRow).y);
    settle();
    EXPECT_EQ(highlightedRow(), openRow);
}

TEST_F(Menu, AClickOnARowChoosesIt)
{
    open();
    bool wasFree = false;
    // Sent by then, and the server comes to it whatever the action does.
    onAction = [&](auto const&) {
        wasFree = !popUp->isOpen() && other.waitUntil([&] { return isEverythingFree() && !isShown(); });
    };
    clickRow(updateRow);
    EXPECT_EQ(actions, Texts { "update" });
    EXPECT_TRUE(wasFree) << "the action came before the menu had gone";
    EXPECT_NE(connection->latestUserTime(), xcb_timestamp_t { XCB_CURRENT_TIME });
    expectClosed();
}

TEST_F(Menu, TheRowUnderThePointerIsHighlighted)
{
    open();
    for (auto const row : { openRow, settingsRow, quitRow }) {
        auto const middle = middleOf(row);
        user.movePointer(middle.x, middle.y);
        settle();
        EXPECT_EQ(highlightedRow(), row);
    }
    for (auto const row : { lineRow, offRow }) {
        auto const middle = middleOf(row);
        user.movePointer(middle.x, middle.y);
        settle();
        EXPECT_EQ(highlightedRow(), std::nullopt) << row;
    }
    user.movePointer(middleOf(openRow).x, middleOf(openRow).y);
    settle();
    user.movePointer(20, 700);
    settle();
    EXPECT_EQ(highlightedRow(), std::nullopt);
}

TEST_F(Menu, AClickOnARowThatCannotBeChosenChangesNothing)
{
    open();
    clickRow(lineRow);
    clickRow(offRow);
    EXPECT_TRUE(popUp->isOpen());
    EXPECT_EQ(actions, Texts {});
    clickRow(openRow);
    EXPECT_EQ(actions, Texts { "open" });
}

TEST_F(Menu, AWheelChangesNothing)
{
    open();
    user.movePointer(20, 700);
    for (int const wheel : { 4, 5 }) {
        user.button(wheel, true);
        user.button(wheel, false);
    }
    settle();
    EXPECT_TRUE(popUp->isOpen());
}

TEST_F(Menu, APressThatIsStillHeldChoosesWhereItIsLetGo)
{
    user.movePointer(icon.middleX(), icon.middleY());
    user.button(1, true);
    open();
    auto const middle = middleOf(settingsRow);
    user.movePointer(middle.x, middle.y);
    settle();
    EXPECT_EQ(highlightedRow(), settingsRow);
    user.button(1, false);
    settle();
    EXPECT_EQ(actions, Texts { "settings" });
    expectClosed();
}

TEST_F(Menu, APressThatIsLetGoAtOnceLeavesItOpen)
{
    user.movePointer(icon.middleX(), icon.middleY());
    user.button(1, true);
    open();
    user.movePointer(icon.middleX() + 4, icon.middleY());
    user.button(1, false);
    settle();
    EXPECT_TRUE(popUp->isOpen());
    clickRow(newRow);
    EXPECT_EQ(actions, Texts { "new" });
    expectClosed();
}

TEST_F(Menu, APressThatIsHeldAndLetGoElsewhereCloses)
{
    user.movePointer(icon.middleX(), icon.middleY());
    user.button(3, true);
    open();
    user.movePointer(200, 600);
    user.button(3, false);
    settle();
    EXPECT_EQ(actions, Texts {});
    expectClosed();
}

TEST_F(Menu, AClickElsewhereClosesAndReachesNobody)
{
    spreadForeignWindow();
    open();
    user.movePointer(200, 600);
    user.button(1, true);
    settle();
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(user.canGrabKeyboard());
    user.button(1, false);
    expectClosed();
    EXPECT_EQ(foreignButtonEvents(), 0);
    EXPECT_EQ(actions, Texts {});
    // The next one is theirs again.
    click(200, 600);
    EXPECT_EQ(foreignButtonEvents(), 2);
}

TEST_F(Menu, AnOwnerThatClosesItAgainDoesNotLetTheRestOfAClickOut)
{
    spreadForeignWindow();
    open();
    user.movePointer(200, 600);
    user.button(1, true);
    pumpUntil([&] { return closings == 1; });
    popUp->close();
    settle();
    user.button(1, false);
    expectClosed();
    EXPECT_EQ(foreignButtonEvents(), 0);
}

TEST_F(Menu, APressOnTheIconClosesAndIsNotHeardThere)
{
    spreadForeignWindow();
    open();
    click(icon.middleX(), icon.middleY());
    expectClosed();
    EXPECT_EQ(foreignButtonEvents(), 0);
}

TEST_F(Menu, AClickThatIsOverBeforeItIsHeardOfLeavesNothingBehind)
{
    open();
    user.movePointer(200, 600);
    user.button(1, true);
    user.button(1, false);
    expectClosed();
}

class MenuOfFewColours : public MenuTest {
protected:
    MenuOfFewColours()
        : MenuTest("1280x800x16")
    {
    }
};

TEST_F(MenuOfFewColours, IsDrawnWithTheColoursThatTheScreenHas)
{
    fillMenu();
    open();
    XHandle<xcb_get_image_reply_t> const image(xcb_get_image_reply(other.wire(),
        xcb_get_image(other.wire(), XCB_IMAGE_FORMAT_Z_PIXMAP, window(), 3, 3, 1, 1, 0xFFFFFFFF), nullptr));
    ASSERT_EQ(image->depth, 16);
    EXPECT_EQ(*reinterpret_cast<std::uint16_t const*>(xcb_get_image_data(image.get())), 0xFFDF);
    clickRow(newRow);
    EXPECT_EQ(actions, Texts { "new" });
}

} // namespace paneweld_tests
