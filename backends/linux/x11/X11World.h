#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/EarlyHold.h"
#include "backends/linux/x11/PointerButtons.h"
#include "backends/linux/x11/ServerClock.h"
#include "backends/linux/x11/WindowFinder.h"
#include "backends/linux/x11/X11Context.h"
#include "backends/linux/x11/X11Desktop.h"
#include "backends/linux/x11/X11EventMonitor.h"
#include "backends/linux/x11/X11HotKeys.h"
#include "backends/linux/x11/X11Keyboard.h"
#include "backends/linux/x11/X11Menu.h"
#include "backends/linux/x11/X11Screen.h"
#include "backends/linux/x11/X11Tray.h"
#include "backends/linux/x11/X11TrayIcon.h"
#include "backends/linux/x11/X11Window.h"
#include "platform/dispatch/Clock.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace platform {
class NSApplication;
}

namespace backends {

// One X server as this process sees it: it carries the server's events to whom they concern, keeps the windows, and
// knows which of them has the keyboard. Main thread only.
class X11World {
public:
    X11World(std::unique_ptr<Connection> connection, platform::NSApplication& application, EventLoop& loop,
        Animator& animator, platform::Clock& clock, platform::HotKeyModifierKeys const& modifierKeys);
    ~X11World();

    // Waits for a few answers about the desktop. Windows are not looked for yet.
    void start(std::function<void()> screenDidChange);
    // Finds the windows that are there; their reports come from the loop.
    void findWindows();
    // Hands out what the server has said, and what it answers to the questions that this leads to. A server that
    // stands still is not waited for.
    void catchUp();

    bool isAlive() const { return m_connection->isAlive(); }
    // Whether the server is one inside a Wayland session.
    bool isInsideWayland() const { return m_isInsideWayland; }
    X11EventMonitor& eventMonitors() { return m_monitors; }
    X11HotKeys& hotKeys() { return m_hotKeys; }
    X11Keyboard const& keyboard() const { return m_keyboard; }
    X11Screen const& screen() const { return m_screen; }
    X11Tray& tray() { return m_tray; }
    // Whether an icon in the tray would show anything.
    bool canDrawTrayIcons() const { return m_connection->render().isPresent; }
    // Of icons in the tray.
    X11Menu& menu() { return m_menu; }
    std::optional<platform::NSScreen> mainScreen() const;

    bool announce(xcb_window_t xid);
    std::shared_ptr<X11Window> window(xcb_window_t xid) const;
    bool beginMove(xcb_window_t xid, int rootX, int rootY, int button);
    // While a dialog of another program is open that belongs to us, pinned windows must not cover it: they step aside,
    // but for the one that the dialog is known to stay above.
    void makeWayForDialog(std::optional<xcb_window_t> parent);
    void dialogHasClosed();
    // Asks the tray, which has an owner, to take in an icon. What is dropped on it is dropped on the view.
    std::unique_ptr<X11TrayIcon> makeTrayIcon(X11TrayIcon::Identity const& identity,
        std::weak_ptr<platform::NSView> view, X11TrayIcon::Observer observer, platform::OSLog const& log);
    // The window that is raised or mapped next may come forward with the right of the latest event.
    void activate();
    // The user did something that the server knows nothing of; the desktop's activation token for it, or an empty one.
    void userDidAct(std::string_view activationToken) { m_serverClock.noteUserAct(activationToken); }

private:
    void askWhetherInsideWayland();
    void handleEvent(xcb_generic_event_t const& event);
    void handleWindowEvent(xcb_generic_event_t const& event);
    void handleFocus(xcb_focus_in_event_t const& event);
    void handleMessage(xcb_client_message_event_t const& event);
    void handleDestroy(xcb_window_t xid);
    void insert(std::shared_ptr<X11Window> window);
    void remove(std::shared_ptr<X11Window> const& window);
    X11Window::Observer observeWindow();
    void windowDidShow(X11Window& window);
    void updateKeyWindow();
    void updateWatching();
    void connectionWasLost();
    // A copy of the list: a visit may report, and a report may lead anywhere.
    template<typename Visit>
    void forEachWindow(Visit visit)
    {
        std::vector<std::shared_ptr<X11Window>> windows;
        for (auto const& [xid, window] : m_windows)
            windows.push_back(window);
        for (auto const& window : windows)
            visit(*window);
    }

    platform::NSApplication& m_application;
    platform::Clock& m_clock;
    std::unique_ptr<Connection> m_connection;
    EarlyHold m_earlyHold;
    ServerClock m_serverClock;
    X11Desktop m_desktop;
    X11Screen m_screen;
    X11Keyboard m_keyboard;
    X11EventMonitor m_monitors;
    X11HotKeys m_hotKeys;
    X11Tray m_tray;
    X11Menu m_menu;
    PointerButtons m_buttons;
    WindowFinder m_finder;
    X11Context m_context;
    std::map<xcb_window_t, std::shared_ptr<X11Window>> m_windows;
    // Those that are being announced, not known to be ours yet. They hear no events.
    std::map<xcb_window_t, std::shared_ptr<X11Window>> m_asserted;
    // Where the keyboard is when no window manager tells.
    xcb_window_t m_focused = XCB_WINDOW_NONE;
    std::optional<platform::Seconds> m_activationEnd;
    bool m_isInsideWayland = false;
};

} // namespace backends
