#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/IconPainter.h"
#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/X11DropTarget.h"
#include "backends/linux/x11/X11Tray.h"

#include <functional>
#include <string>

namespace platform {
class NSView;
}

namespace backends {

// A window of ours inside a tray: asks to be taken in (XEmbed), draws a picture in the size that the tray gives it,
// tells presses, and takes drops for a view. A tray that goes drops the window, and so does this: a new tray takes a
// new icon. Main thread only.
class X11TrayIcon {
public:
    struct Press {
        enum class Button { Left, Right };
        Button button = Button::Left;
        // The icon on the root window, at the time.
        PixelRect area {};
        xcb_timestamp_t time = XCB_CURRENT_TIME;
    };
    // Called from the loop; each of them may drop the icon.
    struct Observer {
        // What to draw in a square of so many pixels a side, no larger than that.
        std::function<BlendedPicture(int side)> picture {};
        std::function<void()> didDock {};
        // The tray has let go of it, and it will not be taken in again.
        std::function<void()> didLeave {};
        std::function<void(Press const&)> didPress {};
    };
    struct Identity {
        // For people, and for trays that sort by it (WM_CLASS).
        std::string title {};
        std::string name {};
        // In pixels, until the tray says otherwise.
        int side = 22;
    };

    // The tray has an owner.
    X11TrayIcon(Connection& connection, EventLoop& loop, X11Tray& tray, Identity const& identity,
        std::weak_ptr<platform::NSView> view, Observer observer, platform::OSLog const& log);
    ~X11TrayIcon();
    X11TrayIcon(X11TrayIcon const&) = delete;
    X11TrayIcon& operator=(X11TrayIcon const&) = delete;

    xcb_window_t window() const { return m_window; }
    bool isDocked() const { return m_isDocked; }
    void redraw();

private:
    void createWindow();
    void describeWindow(Identity const& identity);
    void requestSide(int side);
    void handle(xcb_generic_event_t const& event);
    void handleConfigure(xcb_configure_notify_event_t const& event);
    void handleReparent(xcb_reparent_notify_event_t const& event);
    void handlePress(xcb_button_press_event_t const& event);
    void leave();

    Connection& m_connection;
    X11Tray& m_tray;
    Observer m_observer;
    IconPainter m_painter;
    xcb_window_t m_window;
    xcb_visualid_t m_visual;
    xcb_colormap_t m_colormap = XCB_NONE;
    int m_width;
    int m_height;
    int m_requestedSide;
    bool m_isDocked = false;
    bool m_isGone = false;
    std::unique_ptr<X11DropTarget> m_drops;
    WindowEvents::Registration m_events;
};

} // namespace backends
