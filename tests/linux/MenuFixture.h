#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/MenuPainter.h"
#include "backends/linux/x11/X11Desktop.h"
#include "backends/linux/x11/X11EventMonitor.h"
#include "backends/linux/x11/X11HotKeys.h"
#include "backends/linux/x11/X11Keyboard.h"
#include "backends/linux/x11/X11Menu.h"
#include "backends/linux/x11/X11Screen.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/RecordedMenu.h"
#include "tests/linux/SettingsOwner.h"
#include "tests/support/CollectedLog.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// A menu on a screen of its own, with a user who presses and somebody else who looks. What is chosen is written down.
class MenuTest : public ::testing::Test, protected RecordedMenu {
protected:
    using Texts = std::vector<std::string>;
    // Of the menu that fillMenu makes.
    static constexpr std::size_t openRow = 0, newRow = 1, settingsRow = 2, lineRow = 3, updateRow = 4, quitRow = 6,
                                 offRow = 7;

    explicit MenuTest(std::string const& screen = "1280x800x24");
    ~MenuTest() override;

    // The usual ones, and Off, which nobody answers for.
    void fillMenu();
    // Opens it, and waits until it has pointer and keyboard.
    void open(backends::PixelRect const& anchor = icon);
    void beginToOpen(backends::PixelRect const& anchor = icon);

    bool pumpUntil(std::function<bool()> condition);
    // What is on its way between the server, the menu and the others is there afterwards.
    void settle();

    void strike(std::vector<xcb_keycode_t> const& keys);
    void click(int x, int y);
    void clickRow(std::size_t row);

    // The menu's window on the screen.
    xcb_window_t window();
    bool isShown() { return window() != XCB_WINDOW_NONE; }
    Geometry place() { return user.geometry(window()); }
    // The middle of a row, in pixels of the root.
    Geometry middleOf(std::size_t row);
    // The one that is drawn as chosen next.
    std::optional<std::size_t> highlightedRow();
    std::uint32_t background();
    // Whether another client can have pointer and keyboard.
    bool isEverythingFree();

    // Gone without a trace, and its owner was told once.
    void expectClosed();

    void setScale(double scale);
    void setTheme(std::string const& theme, std::string const& font);

    // In a panel at the top.
    static constexpr backends::PixelRect icon { 600, 2, 24, 24 };

    Desktop desktop;
    KeyboardOwner user;
    Client other;
    std::unique_ptr<SettingsOwner> settingsOwner;
    CollectedLog lines;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<backends::Connection> connection;
    std::unique_ptr<backends::X11Desktop> windows;
    std::unique_ptr<backends::X11Screen> screen;
    std::unique_ptr<backends::X11Keyboard> keyboard;
    // They see every key, too.
    std::unique_ptr<backends::X11EventMonitor> monitors;
    std::unique_ptr<backends::X11HotKeys> hotKeys;
    std::unique_ptr<backends::X11Menu> popUp;
    // Called with each action before it is written down.
    std::function<void(std::string const&)> onAction;
    Texts actions;
    int closings = 0;

private:
    backends::MenuLayout layout();
    void didChoose(std::string const& action) override;
};

} // namespace paneweld_tests
