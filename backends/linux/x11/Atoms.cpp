#include "backends/linux/x11/Atoms.h"

#include "backends/linux/x11/Handles.h"

#include <algorithm>
#include <string>
#include <vector>

namespace backends {

namespace {

constexpr std::size_t nameCount = static_cast<std::size_t>(AtomName::Count);

// In the order of AtomName.
constexpr char const* names[nameCount] = {
    "UTF8_STRING",
    "WM_PROTOCOLS",
    "WM_DELETE_WINDOW",
    "WM_TAKE_FOCUS",
    "WM_STATE",
    "MANAGER",
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_ACTIVE_WINDOW",
    "_NET_CLIENT_LIST",
    "_NET_CURRENT_DESKTOP",
    "_NET_WORKAREA",
    "_NET_MOVERESIZE_WINDOW",
    "_NET_RESTACK_WINDOW",
    "_NET_FRAME_EXTENTS",
    "_NET_WM_MOVERESIZE",
    "_NET_WM_NAME",
    "_NET_WM_DESKTOP",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_STICKY",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_MAXIMIZED_VERT",
    "_NET_WM_STATE_MAXIMIZED_HORZ",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STRUT",
    "_NET_WM_STRUT_PARTIAL",
    "_NET_WM_USER_TIME",
    "_NET_WM_WINDOW_OPACITY",
    "_GTK_FRAME_EXTENTS",
    "_KDE_NET_WM_BLUR_BEHIND_REGION",
    "_MOTIF_WM_HINTS",
    "_XSETTINGS_SETTINGS",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_SYSTEM_TRAY_OPCODE",
    "_NET_SYSTEM_TRAY_ORIENTATION",
    "_NET_SYSTEM_TRAY_VISUAL",
    "_NET_SYSTEM_TRAY_COLORS",
    "_XEMBED",
    "_XEMBED_INFO",
    "XdndAware",
    "XdndEnter",
    "XdndPosition",
    "XdndStatus",
    "XdndLeave",
    "XdndDrop",
    "XdndFinished",
    "XdndTypeList",
    "XdndSelection",
    "XdndActionCopy",
    "_PANEWELD_DROP",
    "INCR",
    "text/uri-list",
    "text/x-moz-url",
    "text/uri-list;charset=utf-8",
    "_NETSCAPE_URL",
};

} // namespace

Atoms Atoms::intern(xcb_connection_t* connection, int screenNumber)
{
    std::vector<xcb_intern_atom_cookie_t> cookies;
    auto const ask = [&](std::string const& name) {
        cookies.push_back(xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    };
    for (auto const* name : names)
        ask(name);
    ask("_NET_WM_CM_S" + std::to_string(screenNumber));
    ask("_XSETTINGS_S" + std::to_string(screenNumber));
    ask("_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber));

    std::vector<xcb_atom_t> answers;
    for (auto const cookie : cookies) {
        XHandle<xcb_intern_atom_reply_t> const reply(xcb_intern_atom_reply(connection, cookie, nullptr));
        answers.push_back(reply ? reply->atom : xcb_atom_t { XCB_ATOM_NONE });
    }
    Atoms atoms;
    std::copy_n(answers.begin(), nameCount, atoms.m_atoms.begin());
    atoms.m_compositor = answers[nameCount];
    atoms.m_settings = answers[nameCount + 1];
    atoms.m_tray = answers[nameCount + 2];
    return atoms;
}

} // namespace backends
