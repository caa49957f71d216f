#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/MenuGrabs.h"
#include "backends/linux/x11/MenuPress.h"
#include "backends/linux/x11/PixelRect.h"
#include "platform/appkit/NSMenu.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace backends {

class X11Keyboard;
class X11Screen;

// A menu that opens beside an icon in the tray of an X server, drawn by ourselves, as a host may have any toolkit or
// none. While it is open it has pointer and keyboard. Main thread only.
//
// A click elsewhere closes it and reaches nobody, neither the press nor the release, and so does a click on the icon:
// whoever opens the menu by a press there does not hear of the press that closes it. An item with a menu of its own is
// shown greyed and cannot be chosen. There are no letters underlined, no scrolling, and nothing is told to screen
// readers, which see no window of this kind: a desktop that draws the menu itself is better for who needs them.
class X11Menu {
public:
    X11Menu(Connection& connection, EventLoop& loop, X11Screen const& screen, X11Keyboard const& keyboard);
    // Closes it, and didClose is not called any more.
    ~X11Menu();
    X11Menu(X11Menu const&) = delete;
    X11Menu& operator=(X11Menu const&) = delete;

    // Opens it beside the anchor (pixels of the root: the icon's rectangle), below it where there is room, else above,
    // else beside, on the anchor's monitor. The time is that of the event that asked for it. A menu that cannot be
    // shown is logged as an error and closed at once. didClose is called once, from the loop. One menu at a time: one
    // that is open is closed first.
    void open(std::shared_ptr<platform::NSMenu> menu, PixelRect const& anchor, xcb_timestamp_t time,
        std::function<void()> didClose);
    // Also for who hears that the server has gone, of which nothing is told here.
    void close();
    bool isOpen() const { return m_session != nullptr; }

private:
    struct Session;

    std::unique_ptr<Session> makeSession(std::shared_ptr<platform::NSMenu> menu, PixelRect const& anchor);
    void readRows();
    void show();
    void grabsAnswered(std::optional<MenuGrabs::Pointer> const& pointer);
    void endSession();
    void choose(std::size_t row, xcb_timestamp_t time);
    void setCurrent(std::optional<std::size_t> row);

    void handle(xcb_generic_event_t const& event);
    void handleKey(xcb_key_press_event_t const& event);
    void handleMotion(xcb_motion_notify_event_t const& event);
    void handleButton(xcb_button_press_event_t const& event, bool isDown);
    MenuPress::Place placeOf(xcb_button_press_event_t const& event) const;
    void reportClosed(std::function<void()> didClose);

    Connection& m_connection;
    EventLoop& m_loop;
    X11Screen const& m_screen;
    X11Keyboard const& m_keyboard;
    MenuGrabs m_grabs;
    std::unique_ptr<Session> m_session;
    std::vector<std::function<void()>> m_closed;
    LoopSource m_closedSource;
};

} // namespace backends
