#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/ScreenEdges.h"
#include "backends/linux/x11/XSettings.h"
#include "platform/appkit/NSScreen.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace backends {

class X11Desktop;

// The monitors of one X screen (RandR), what panels leave of them, and how many pixels make a point. Main thread only.
class X11Screen {
public:
    X11Screen(Connection& connection, X11Desktop const& desktop);

    // Asks; the answers come with the next replies. didChange is called when the scale, the size of the root or the
    // refresh rate may be another.
    void start(std::function<void()> didChange);
    void handle(xcb_generic_event_t const& event);

    PixelScale const& scale() const { return m_scale; }
    // As the desktop tells them; none where nobody does.
    Settings const& settings() const { return m_settings; }
    // In hertz; 0 when the server does not know, as a virtual one.
    double refreshRate() const { return m_refreshRate; }

    // The monitor that holds the middle of the window or most of it, else the primary one, else the first.
    platform::NSScreen mainScreen(std::optional<PixelRect> const& keyWindow) const;
    // All of the monitor that holds the place, chosen in the same way.
    PixelRect monitorAt(PixelRect const& place) const { return mainMonitor(place).rect; }

private:
    struct Monitor {
        PixelRect rect;
        bool isPrimary = false;
    };

    void handlePropertyChange(xcb_window_t window, xcb_atom_t property);
    void readMonitors();
    void readRefreshRate();
    void readWorkAreas();
    void readEdges(ScreenEdges::Windows which);
    void readMonitorWorkArea(xcb_atom_t property, std::uint32_t desktop);
    void readResources();
    void readSettingsOwner();
    void followSettingsOwner(xcb_window_t owner);
    void readSettings();
    void updateScale();
    void setRootHeight(std::int32_t height);
    Monitor mainMonitor(std::optional<PixelRect> const& keyWindow) const;
    PixelRect visiblePart(PixelRect const& monitor) const;
    void notify() const;

    Connection& m_connection;
    X11Desktop const& m_desktop;
    std::function<void()> m_didChange;
    PixelScale m_scale;
    std::int32_t m_rootWidth;
    double m_refreshRate = 0;
    std::vector<Monitor> m_monitors;
    // One rectangle a desktop; and, where the window manager tells more, several a desktop, one a monitor.
    std::vector<PixelRect> m_workAreas;
    std::map<std::uint32_t, std::vector<PixelRect>> m_monitorWorkAreas;
    std::map<xcb_atom_t, std::uint32_t> m_monitorWorkAreaAtoms;
    // Read where there are several monitors and no window manager tells more of them.
    ScreenEdges m_edges;
    xcb_window_t m_settingsOwner = XCB_WINDOW_NONE;
    Settings m_settings;
    std::string m_resources;
};

} // namespace backends
