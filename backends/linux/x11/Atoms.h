#pragma once

#include <array>
#include <cstddef>
#include <xcb/xcb.h>

namespace backends {

// The names that this client speaks with window managers, compositors and toolkits: ICCCM, EWMH, XSETTINGS, Motif,
// and with trays and drag sources: System Tray, XEmbed, XDND.
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
    NET_WM_STATE_MAXIMIZED_VERT,
    NET_WM_STATE_MAXIMIZED_HORZ,
    NET_WM_STATE_FULLSCREEN,
    NET_WM_STRUT,
    NET_WM_STRUT_PARTIAL,
    NET_WM_USER_TIME,
    NET_WM_WINDOW_OPACITY,
    GTK_FRAME_EXTENTS,
    KDE_NET_WM_BLUR_BEHIND_REGION,
    MOTIF_WM_HINTS,
    XSETTINGS_SETTINGS,
    NET_WM_PID,
    NET_WM_WINDOW_TYPE,
    NET_WM_WINDOW_TYPE_POPUP_MENU,
    NET_SYSTEM_TRAY_OPCODE,
    NET_SYSTEM_TRAY_ORIENTATION,
    NET_SYSTEM_TRAY_VISUAL,
    NET_SYSTEM_TRAY_COLORS,
    XEMBED,
    XEMBED_INFO,
    XdndAware,
    XdndEnter,
    XdndPosition,
    XdndStatus,
    XdndLeave,
    XdndDrop,
    XdndFinished,
    XdndTypeList,
    XdndSelection,
    XdndActionCopy,
    PANEWELD_DROP,
    INCR,
    TEXT_URI_LIST,
    TEXT_X_MOZ_URL,
    TEXT_URI_LIST_UTF8,
    NETSCAPE_URL,
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
    // And who has a tray on it.
    xcb_atom_t tray() const { return m_tray; }

private:
    std::array<xcb_atom_t, static_cast<std::size_t>(AtomName::Count)> m_atoms {};
    xcb_atom_t m_compositor = XCB_ATOM_NONE;
    xcb_atom_t m_settings = XCB_ATOM_NONE;
    xcb_atom_t m_tray = XCB_ATOM_NONE;
};

} // namespace backends
