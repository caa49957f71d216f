#pragma once

#include <array>
#include <cstddef>
#include <xcb/xcb.h>

namespace backends {

// The names that this client speaks with window managers, compositors and toolkits: ICCCM, EWMH, XSETTINGS, Motif.
enum class AtomName : std::size_t {
    UTF8_STRING,
    WM_PROTOCOLS,
    WM_DELETE_WINDOW,
    WM_TAKE_FOCUS,
    WM_STATE,
    MANAGER,
    NET_SUPPORTED,
    NET_SUPPORTING_WM_CHECK,
    NET_ACTIVE_WINDOW,
    NET_CLIENT_LIST,
    NET_CURRENT_DESKTOP,
    NET_WORKAREA,
    NET_MOVERESIZE_WINDOW,
    NET_RESTACK_WINDOW,
    NET_FRAME_EXTENTS,
    NET_WM_MOVERESIZE,
    NET_WM_NAME,
    NET_WM_DESKTOP,
    NET_WM_STATE,
    NET_WM_STATE_ABOVE,
    NET_WM_STATE_STICKY,
    NET_WM_STATE_HIDDEN,
    NET_WM_USER_TIME,
    NET_WM_WINDOW_OPACITY,
    GTK_FRAME_EXTENTS,
    KDE_NET_WM_BLUR_BEHIND_REGION,
    MOTIF_WM_HINTS,
    XSETTINGS_SETTINGS,
    Count,
};

// The server's numbers for those names, and for the few that carry the screen's number.
class Atoms {
public:
    // One round trip.
    static Atoms intern(xcb_connection_t* connection, int screenNumber);

    xcb_atom_t operator[](AtomName name) const { return m_atoms[static_cast<std::size_t>(name)]; }
    // Selections: who composites this screen, and who tells its settings.
    xcb_atom_t compositor() const { return m_compositor; }
    xcb_atom_t settings() const { return m_settings; }

private:
    std::array<xcb_atom_t, static_cast<std::size_t>(AtomName::Count)> m_atoms {};
    xcb_atom_t m_compositor = XCB_ATOM_NONE;
    xcb_atom_t m_settings = XCB_ATOM_NONE;
};

} // namespace backends
