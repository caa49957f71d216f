#include "tests/linux/MenuFixture.h"

#include "backends/linux/x11/Handles.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <sys/resource.h>

namespace paneweld_tests {

using backends::PixelRect;
using backends::XHandle;
using platform::NSMenu;
using platform::NSMenuItem;

namespace {

constexpr xcb_keycode_t returnKey = 36, keypadEnterKey = 104, spaceKey = 65, escapeKey = 9, upKey = 111, downKey = 116;
constexpr xcb_keycode_t homeKey = 110, endKey = 115, oKey = 32, sKey = 39, nKey = 57, qKey = 24, commaKey = 59;
constexpr std::size_t openRow = 0, newRow = 1, settingsRow = 2, lineRow = 3, updateRow = 4, quitRow = 6, offRow = 7;

using Texts = std::vector<std::string>;

} // namespace

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

    void takePointer(Client& client)
    {
        XHandle<xcb_grab_pointer_reply_t> const taken(xcb_grab_pointer_reply(client.wire(),
            xcb_grab_pointer(client.wire(), 0, client.root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME),
            nullptr));
        ASSERT_EQ(taken->status, XCB_GRAB_STATUS_SUCCESS);
    }
    void takeKeyboard(Client& client)
    {
        XHandle<xcb_grab_keyboard_reply_t> const taken(xcb_grab_keyboard_reply(client.wire(),
            xcb_grab_keyboard(
                client.wire(), 0, client.root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
            nullptr));
        ASSERT_EQ(taken->status, XCB_GRAB_STATUS_SUCCESS);
    }

    // Gone without a trace, and its owner was told once.
    void expectClosed()
    {
        EXPECT_TRUE(pumpUntil([&] { return closings == 1; }));
        settle();
        EXPECT_EQ(closings, 1);
        EXPECT_FALSE(popUp->isOpen());
        EXPECT_FALSE(isShown());
        EXPECT_TRUE(isEverythingFree());
    }

    void pumpFor(std::chrono::milliseconds time)
    {
        auto const end = std::chrono::steady_clock::now() + time;
        pumpUntil([&] { return std::chrono::steady_clock::now() >= end; });
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
    EXPECT_EQ(lines.texts, Texts {});
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
    strike({ downKey });
    EXPECT_EQ(highlightedRow(), openRow);
}

TEST_F(Menu, AClickOnARowChoosesIt)
{
    open();
    bool wasFree = false;
    onAction = [&](auto const&) { wasFree = isEverythingFree() && !isShown() && !popUp->isOpen(); };
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

TEST_F(Menu, ArrowsGoAroundAndOverWhatCannotBeChosen)
{
    open();
    for (auto const row : { openRow, newRow, settingsRow, updateRow, quitRow, openRow }) {
        strike({ downKey });
        EXPECT_EQ(highlightedRow(), row);
    }
    for (auto const row : { quitRow, updateRow }) {
        strike({ upKey });
        EXPECT_EQ(highlightedRow(), row);
    }
    strike({ homeKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ endKey });
    EXPECT_EQ(highlightedRow(), quitRow);
    strike({ returnKey });
    EXPECT_EQ(actions, Texts { "quit" });
    expectClosed();
}

TEST_F(Menu, ReturnEnterAndSpaceChooseTheHighlightedRowAndNothingElse)
{
    for (auto const key : { returnKey, keypadEnterKey, spaceKey }) {
        open();
        strike({ key });
        EXPECT_TRUE(popUp->isOpen()) << "chosen without a highlighted row";
        strike({ downKey });
        strike({ downKey });
        strike({ key });
        EXPECT_FALSE(popUp->isOpen());
    }
    EXPECT_EQ(actions, (Texts { "new", "new", "new" }));
}

TEST_F(Menu, EscapeCloses)
{
    open();
    strike({ downKey });
    strike({ escapeKey });
    EXPECT_EQ(actions, Texts {});
    expectClosed();
}

TEST_F(Menu, FirstLettersGoToTheirRowsInTurn)
{
    add("Save", "save");
    open();
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), settingsRow);
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), offRow + 1);
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), settingsRow);
    // Only one, and it is not chosen by that. The other one with this letter is off.
    strike({ oKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ oKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ commaKey });
    EXPECT_EQ(highlightedRow(), openRow);
    EXPECT_EQ(actions, Texts {});
}

TEST_F(Menu, ShortcutsChooseWithTheirModifierAndWithAnyLocks)
{
    for (auto const& locks : { std::vector<xcb_keycode_t> {}, { numLockKey }, { capsLockKey }, { numLockKey } }) {
        for (auto const lock : locks)
            strike({ lock });
        open();
        strike({ leftSuperKey, qKey });
        strike({ leftControlKey, leftShiftKey, qKey });
        EXPECT_TRUE(popUp->isOpen());
        strike({ leftControlKey, qKey });
        EXPECT_FALSE(popUp->isOpen());
        open();
        strike({ leftControlKey, commaKey });
        EXPECT_FALSE(popUp->isOpen());
        // The keyboard of the next round starts with the arrows.
        open();
        strike({ downKey });
        strike({ nKey });
        EXPECT_EQ(highlightedRow(), newRow);
        popUp->close();
    }
    Texts expected;
    for (int i = 0; i < 4; ++i)
        expected.insert(expected.end(), { "quit", "settings" });
    EXPECT_EQ(actions, expected);
}

TEST_F(Menu, TheShortcutOfADisabledRowDoesNothing)
{
    open();
    strike({ leftControlKey, oKey });
    EXPECT_TRUE(popUp->isOpen());
    EXPECT_EQ(actions, Texts {});
}

TEST_F(Menu, AnItemWithAMenuOfItsOwnCannotBeChosen)
{
    auto const more = add("More", "more");
    more->setSubmenu(std::make_shared<NSMenu>());
    open();
    clickRow(offRow + 1);
    EXPECT_TRUE(popUp->isOpen());
    strike({ endKey });
    EXPECT_EQ(highlightedRow(), quitRow);
    EXPECT_EQ(actions, Texts {});
}

TEST_F(Menu, WaitsForAClientThatHoldsThePointerOrTheKeyboard)
{
    for (bool const isPointer : { true, false }) {
        Client holder(desktop.display());
        isPointer ? takePointer(holder) : takeKeyboard(holder);
        beginToOpen();
        pumpFor(std::chrono::milliseconds(200));
        EXPECT_TRUE(popUp->isOpen());
        EXPECT_TRUE(isShown());
        isPointer ? xcb_ungrab_pointer(holder.wire(), XCB_CURRENT_TIME)
                  : xcb_ungrab_keyboard(holder.wire(), XCB_CURRENT_TIME);
        holder.sync();
        // A click that is not ours yet is nobody's business here.
        pumpFor(std::chrono::milliseconds(100));
        clickRow(newRow);
        EXPECT_EQ(actions, Texts { "new" });
        actions.clear();
        EXPECT_FALSE(popUp->isOpen());
        EXPECT_TRUE(isEverythingFree());
    }
}

TEST_F(Menu, GivesUpWhenAClientDoesNotLetGo)
{
    for (bool const isPointer : { true, false }) {
        Client holder(desktop.display());
        isPointer ? takePointer(holder) : takeKeyboard(holder);
        closings = 0;
        lines.texts.clear();
        beginToOpen();
        ASSERT_TRUE(pumpUntil([&] { return closings == 1; }));
        EXPECT_FALSE(isShown());
        EXPECT_EQ(lines.texts, Texts { "menu closed: another client keeps the pointer or the keyboard" });
        isPointer ? xcb_ungrab_pointer(holder.wire(), XCB_CURRENT_TIME)
                  : xcb_ungrab_keyboard(holder.wire(), XCB_CURRENT_TIME);
        holder.sync();
        expectClosed();
    }
}

TEST_F(Menu, ANewTitleIsShownWhileItIsOpen)
{
    auto const changing = add("Short", "change");
    open();
    auto const before = place();
    strike({ downKey });
    changing->setTitle("A title that needs very much more room than all of the others");
    changing->setTitle("A title that needs very much more room than all of the others do");
    ASSERT_TRUE(pumpUntil([&] { return place().width > before.width; }));
    EXPECT_EQ(place().y, before.y);
    EXPECT_EQ(highlightedRow(), openRow);
    clickRow(offRow + 1);
    EXPECT_EQ(actions, Texts { "change" });
    // Nobody listens any more.
    changing->setTitle("Short");
    expectClosed();
}

TEST_F(Menu, ClosesWhenSomebodyTakesItsWindowAway)
{
    open();
    xcb_unmap_window(other.wire(), window());
    other.sync();
    expectClosed();
    closings = 0;
    open();
    xcb_destroy_window(other.wire(), window());
    other.sync();
    expectClosed();
    EXPECT_EQ(lines.texts, Texts {});
}

TEST_F(Menu, ClosesWhenItsGrabsAreGone)
{
    for (bool const isPointer : { true, false }) {
        closings = 0;
        open();
        // By the connection itself, whose other parts grab and let go too.
        isPointer ? xcb_ungrab_pointer(connection->wire(), XCB_CURRENT_TIME)
                  : xcb_ungrab_keyboard(connection->wire(), XCB_CURRENT_TIME);
        expectClosed();
    }
}

TEST_F(Menu, AnActionMayDestroyIt)
{
    open();
    onAction = [&](auto const&) { popUp.reset(); };
    clickRow(quitRow);
    EXPECT_EQ(actions, Texts { "quit" });
    settle();
    EXPECT_TRUE(isEverythingFree());
    EXPECT_FALSE(isShown());
    EXPECT_EQ(closings, 0);
}

TEST_F(Menu, LeavesNothingBehindWhenItGoesBeforeItHasItsGrabs)
{
    beginToOpen();
    popUp.reset();
    settle();
    EXPECT_TRUE(isEverythingFree());
    EXPECT_FALSE(isShown());
    EXPECT_EQ(closings, 0);
}

TEST_F(Menu, AnotherOneClosesTheFirst)
{
    open();
    auto const first = window();
    open({ 100, 2, 24, 24 });
    EXPECT_EQ(closings, 1);
    EXPECT_NE(window(), first);
    EXPECT_EQ(place().x, 100);
    clickRow(openRow);
    ASSERT_TRUE(pumpUntil([&] { return closings == 2; }));
}

TEST_F(Menu, TheOwnerIsToldFromTheLoopOnly)
{
    open();
    popUp->close();
    EXPECT_EQ(closings, 0);
    expectClosed();
    closings = 0;
    popUp->open(nullptr, icon, XCB_CURRENT_TIME, [this] { ++closings; });
    EXPECT_EQ(closings, 0);
    expectClosed();
}

TEST_F(Menu, NothingWakesWhileNobodyDoesAnything)
{
    open();
    strike({ downKey });
    settle();
    pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
    EXPECT_EQ(poll(&wait, 1, 300), 0);
}

TEST_F(Menu, SurvivesTheEndOfTheServer)
{
    open();
    desktop.endServer();
    EXPECT_TRUE(pumpUntil([&] { return closings == 1; }));
    EXPECT_FALSE(popUp->isOpen());
    beginToOpen();
    EXPECT_FALSE(popUp->isOpen());
    EXPECT_TRUE(pumpUntil([&] { return closings == 2; }));
}

TEST_F(Menu, MoreRowsThanTheScreenHasRoomForAreThere)
{
    for (int i = 0; i < 200; ++i)
        add("Row " + std::to_string(i), "row " + std::to_string(i));
    add(std::string(5000, 'w'), "wide");
    open();
    EXPECT_EQ(place(), (Geometry { 0, 0, 1280, 800 }));
    strike({ upKey });
    strike({ returnKey });
    EXPECT_EQ(actions, Texts { "wide" });
}

TEST_F(Menu, AnEmptyMenuOpensAndCloses)
{
    menu = std::make_shared<NSMenu>();
    open();
    strike({ downKey });
    strike({ returnKey });
    strike({ escapeKey });
    expectClosed();
}

TEST_F(Menu, WithoutItsLibraryThereIsNoneAndTheLogSaysSo)
{
    // The loader can open nothing more.
    rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit const none { 0, before.rlim_max };
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    beginToOpen();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(popUp->isOpen());
    expectClosed();
    ASSERT_EQ(lines.texts.size(), 1u);
    EXPECT_TRUE(lines.texts[0].starts_with("menu not shown: libpangocairo-1.0.so.0")) << lines.texts[0];
    open();
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
