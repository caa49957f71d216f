#pragma once

#include "backends/linux/x11/Connection.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <xcb/xcb.h>

namespace backends {

// Keeps each new window of this process unseen while the host's thread is still busy making it. The host's thread is
// ours too, so its loop may come too late: a window manager may have mapped the window by then. This is a thread with a
// connection of its own that does nothing else, sleeps while no window is made on the screen, and gives a window back
// that the main thread does not take over in time.
class EarlyHold {
public:
    explicit EarlyHold(Connection& connection);
    ~EarlyHold();
    EarlyHold(EarlyHold const&) = delete;
    EarlyHold& operator=(EarlyHold const&) = delete;

    // Once this process, by the server's number for it, has windows to hold; more calls do nothing. Without a second
    // connection there is no early hold, and windows are held a little later.
    void start(std::uint32_t ownProcess);

    struct Held {
        bool hasEmptyShape = false;
    };
    // Leaves the window to the main thread: what was done to it, or nothing. Nothing is done to it afterwards. What
    // the main thread undoes after an answer of the server to something that it asked later is undone for good.
    std::optional<Held> take(xcb_window_t window);
    // The opacity that the window had of its own when it was held, once, for whoever shows it now. Where that is not
    // known yet it is written on the window when it is.
    std::optional<std::uint32_t> takeOwnOpacity(xcb_window_t window);
    // The window has gone.
    void forget(xcb_window_t window);

private:
    using Clock = std::chrono::steady_clock;
    // Held and waiting for the main thread, or taken by it.
    struct Entry {
        std::optional<Held> held {};
        Clock::time_point end {};
        std::optional<std::uint32_t> ownOpacity {};
        bool isShown = false;
    };

    void run();
    void handleEvents();
    void handleCreate(xcb_create_notify_event_t const& event);
    void holdAgain(xcb_window_t window);
    bool isOfKnownClient(xcb_window_t window) const;
    bool isOurs(xcb_window_t window);
    // Asks for the opacity that it had.
    std::optional<xcb_get_property_cookie_t> hold(xcb_window_t window);
    void keepOwnOpacity(xcb_window_t window, xcb_get_property_cookie_t question);
    void handleProperty(xcb_property_notify_event_t const& event);
    bool isHeld(xcb_window_t window);
    xcb_get_property_cookie_t askOpacity(xcb_window_t window);
    void holdWithoutCompositor(xcb_window_t window);
    void giveBack(xcb_window_t window, Entry const& entry);
    void giveBackLate();
    int millisecondsToWait();

    Connection& m_connection;
    xcb_connection_t* m_wire = nullptr;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    xcb_atom_t m_opacity = XCB_ATOM_NONE;
    xcb_atom_t m_compositor = XCB_ATOM_NONE;
    std::uint32_t m_ownProcess = 0;
    Connection::Extension m_shape;
    int m_stop = -1;
    std::mutex m_mutex;
    std::map<xcb_window_t, Entry> m_windows;
    // Our windows right below the root, for the thread alone. A window manager's frame hides the end of a window, and
    // so the end of its client.
    std::set<xcb_window_t> m_ours;
    std::thread m_thread;
};

} // namespace backends
