#pragma once

#include "backends/linux/x11/Connection.h"

#include <functional>
#include <set>

namespace backends {

// Who runs this screen beside us: the window manager, what it can do and which window it says is active (EWMH), and
// whether a compositor is there to make windows translucent. Main thread only.
class X11Desktop {
public:
    struct Observer {
        std::function<void()> activeWindowDidChange;
        // Another window manager took over, or the last one went.
        std::function<void()> windowManagerDidChange;
        std::function<void()> compositorDidChange;
        std::function<void()> currentDesktopDidChange;
    };

    explicit X11Desktop(Connection& connection);

    // Asks; the answers come with the next replies.
    void start();
    void setObserver(Observer observer) { m_observer = std::move(observer); }

    bool hasWindowManager() const { return m_checkWindow != XCB_WINDOW_NONE; }
    bool supports(AtomName name) const { return hasWindowManager() && m_supported.contains(m_connection.atom(name)); }
    bool isCompositing() const { return m_compositorOwner != XCB_WINDOW_NONE; }
    xcb_window_t activeWindow() const { return m_activeWindow; }
    std::uint32_t currentDesktop() const { return m_currentDesktop; }

    void handle(xcb_generic_event_t const& event);

    // A message that a window manager takes from the root (EWMH, "Root Window Properties and Related Messages").
    void tellManager(xcb_window_t about, AtomName type, std::array<std::uint32_t, 5> const& words);

private:
    void handlePropertyChange(xcb_atom_t property);
    void readCheckWindow();
    void confirmCheckWindow(xcb_window_t window);
    void loseWindowManager();
    void readSupported();
    void readActiveWindow();
    void readCurrentDesktop();
    void readCompositor();
    void setCompositorOwner(xcb_window_t owner);

    Connection& m_connection;
    Observer m_observer;
    std::set<xcb_atom_t> m_supported;
    xcb_window_t m_checkWindow = XCB_WINDOW_NONE;
    xcb_window_t m_activeWindow = XCB_WINDOW_NONE;
    xcb_window_t m_compositorOwner = XCB_WINDOW_NONE;
    std::uint32_t m_currentDesktop = 0;
};

} // namespace backends
