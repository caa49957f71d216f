#include "tests/linux/MenuFixture.h"

#include "backends/linux/x11/Handles.h"

#include <chrono>
#include <poll.h>
#include <sys/resource.h>

namespace paneweld_tests {

using backends::XHandle;
using platform::NSMenu;

namespace {

constexpr xcb_keycode_t returnKey = 36, escapeKey = 9, downKey = 116;

} // namespace

// What a menu takes from others, and that it gives all of it back.
class MenuEnd : public MenuTest {
protected:
    MenuEnd() { fillMenu(); }

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

    void pumpFor(std::chrono::milliseconds time)
    {
        auto const end = std::chrono::steady_clock::now() + time;
        pumpUntil([&] { return std::chrono::steady_clock::now() >= end; });
    }
};

TEST_F(MenuEnd, WaitsForAClientThatHoldsThePointerOrTheKeyboard)
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

TEST_F(MenuEnd, GivesUpWhenAClientDoesNotLetGo)
{
    for (bool const isPointer : { true, false }) {
        Client holder(desktop.display());
        isPointer ? takePointer(holder) : takeKeyboard(holder);
        closings = 0;
        lines.messages.clear();
        beginToOpen();
        ASSERT_TRUE(pumpUntil([&] { return closings == 1; }));
        EXPECT_FALSE(isShown());
        EXPECT_EQ(lines.messages, Texts { "menu closed: another client keeps the pointer or the keyboard" });
        isPointer ? xcb_ungrab_pointer(holder.wire(), XCB_CURRENT_TIME)
                  : xcb_ungrab_keyboard(holder.wire(), XCB_CURRENT_TIME);
        holder.sync();
        expectClosed();
    }
}

TEST_F(MenuEnd, ANewTitleIsShownWhileItIsOpen)
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

TEST_F(MenuEnd, ClosesWhenSomebodyTakesItsWindowAway)
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
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(MenuEnd, ClosesWhenItsGrabsAreGone)
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

TEST_F(MenuEnd, AnActionMayDestroyIt)
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

TEST_F(MenuEnd, LeavesNothingBehindWhenItGoesBeforeItHasItsGrabs)
{
    beginToOpen();
    popUp.reset();
    settle();
    EXPECT_TRUE(isEverythingFree());
    EXPECT_FALSE(isShown());
    EXPECT_EQ(closings, 0);
}

TEST_F(MenuEnd, AnotherOneClosesTheFirst)
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

TEST_F(MenuEnd, TheOwnerIsToldFromTheLoopOnly)
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

TEST_F(MenuEnd, NothingWakesWhileNobodyDoesAnything)
{
    open();
    strike({ downKey });
    settle();
    pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
    EXPECT_EQ(poll(&wait, 1, 300), 0);
}

TEST_F(MenuEnd, SurvivesTheEndOfTheServer)
{
    open();
    desktop.endServer();
    EXPECT_TRUE(pumpUntil([&] { return closings == 1; }));
    EXPECT_FALSE(popUp->isOpen());
    beginToOpen();
    EXPECT_FALSE(popUp->isOpen());
    EXPECT_TRUE(pumpUntil([&] { return closings == 2; }));
}

TEST_F(MenuEnd, AnEmptyMenuOpensAndCloses)
{
    menu = std::make_shared<NSMenu>();
    open();
    strike({ downKey });
    strike({ returnKey });
    strike({ escapeKey });
    expectClosed();
}

TEST_F(MenuEnd, WithoutItsLibraryThereIsNoneAndTheLogSaysSo)
{
    // All that follows is looked up before: sanitizers check objects of unknown types with descriptors of their own.
    auto& opened = *popUp;
    auto const items = menu;
    auto const didClose = [&count = closings] { ++count; };
    connection->log().error("warm");
    rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    // The loader can open nothing more.
    rlimit const none { 0, before.rlim_max };
    int const limited = setrlimit(RLIMIT_NOFILE, &none);
    opened.open(items, icon, XCB_CURRENT_TIME, didClose);
    int const restored = setrlimit(RLIMIT_NOFILE, &before);
    ASSERT_EQ(limited, 0);
    ASSERT_EQ(restored, 0);
    EXPECT_FALSE(popUp->isOpen());
    expectClosed();
    ASSERT_EQ(lines.messages.size(), 2u);
    EXPECT_TRUE(lines.messages[1].starts_with("menu not shown: libpangocairo-1.0.so.0")) << lines.messages[1];
    open();
}

} // namespace paneweld_tests
