#include "backends/linux/x11/X11TrayIcon.h"

#include "backends/linux/x11/SizeHints.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace backends {

namespace {

// _XEMBED_INFO: the version of the protocol, and the flag of a window that wants to be seen.
constexpr std::uint32_t embedVersion = 0;
constexpr std::uint32_t embedMapped = 1;

constexpr xcb_button_t leftButton = 1;
constexpr xcb_button_t rightButton = 3;

std::uint8_t depthOf(xcb_screen_t const& screen, xcb_visualid_t visual)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto known = xcb_depth_visuals_iterator(depth.data); known.rem > 0; xcb_visualtype_next(&known)) {
            if (known.data->visual_id == visual)
                return depth.data->depth;
        }
    }
    return 0;
}

} // namespace

X11TrayIcon::X11TrayIcon(Connection& connection, EventLoop& loop, X11Tray& tray, Identity const& identity,
    std::weak_ptr<platform::NSView> view, Observer observer, platform::OSLog const& log)
    : m_connection(connection)
    , m_tray(tray)
    , m_observer(std::move(observer))
    , m_painter(connection)
    , m_window(xcb_generate_id(connection.wire()))
    , m_visual(tray.look().visual)
    , m_width(identity.side)
    , m_height(identity.side)
    , m_requestedSide(identity.side)
{
    createWindow();
    describeWindow(identity);
    m_drops = std::make_unique<X11DropTarget>(connection, loop, m_window, std::move(view), log);
    m_events = connection.windowEvents().listen(m_window, [this](auto const& event) { handle(event); });
    tray.askForDock(m_window);
}

X11TrayIcon::~X11TrayIcon()
{
    m_drops.reset();
    if (!m_isGone)
        xcb_destroy_window(m_connection.wire(), m_window);
    if (m_colormap != XCB_NONE)
        xcb_free_colormap(m_connection.wire(), m_colormap);
}

void X11TrayIcon::createWindow()
{
    auto* const wire = m_connection.wire();
    auto const& screen = m_connection.screen();
    auto depth = depthOf(screen, m_visual);
    if (depth == 0) {
        m_visual = screen.root_visual;
        depth = screen.root_depth;
    }
    bool const isForeign = m_visual != screen.root_visual;
    if (isForeign) {
        m_colormap = xcb_generate_id(wire);
        xcb_create_colormap(wire, XCB_COLORMAP_ALLOC_NONE, m_colormap, screen.root, m_visual);
    }
    // With a visual of its own the window's ground is clear, else it is the tray's.
    std::array<std::uint32_t, 4> const values { isForeign ? 0u : std::uint32_t { XCB_BACK_PIXMAP_PARENT_RELATIVE }, 0,
        XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_BUTTON_PRESS,
        isForeign ? m_colormap : screen.default_colormap };
    xcb_create_window(wire, depth, m_window, screen.root, -1, -1, static_cast<std::uint16_t>(m_width),
        static_cast<std::uint16_t>(m_height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_visual,
        (isForeign ? XCB_CW_BACK_PIXEL : XCB_CW_BACK_PIXMAP) | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK
            | XCB_CW_COLORMAP,
        values.data());
}

void X11TrayIcon::describeWindow(Identity const& identity)
{
    auto* const wire = m_connection.wire();
    auto const setText = [&](xcb_atom_t property, xcb_atom_t type, std::string_view text) {
        xcb_change_property(wire, XCB_PROP_MODE_REPLACE, m_window, property, type, 8,
            static_cast<std::uint32_t>(text.size()), text.data());
    };
    auto const utf8 = m_connection.atom(AtomName::UTF8_STRING);
    setText(m_connection.atom(AtomName::NET_WM_NAME), utf8, identity.title);
    setText(XCB_ATOM_WM_NAME, utf8, identity.title);
    // The instance and the class, each with its end.
    auto const& name = identity.name;
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, name + std::string(1, '\0') + name + std::string(1, '\0'));
    std::array<std::uint32_t, 2> const info { embedVersion, embedMapped };
    auto const property = m_connection.atom(AtomName::XEMBED_INFO);
    xcb_change_property(wire, XCB_PROP_MODE_REPLACE, m_window, property, property, 32, info.size(), info.data());
    requestSide(m_requestedSide);
}

// Some trays give an icon what it asks for across their own direction and along it.
void X11TrayIcon::requestSide(int side)
{
    SizeHints hints;
    hints.setMinimum(side, side);
    xcb_change_property(m_connection.wire(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS,
        XCB_ATOM_WM_SIZE_HINTS, 32, static_cast<std::uint32_t>(hints.words().size()), hints.words().data());
}

void X11TrayIcon::handle(xcb_generic_event_t const& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        if (reinterpret_cast<xcb_expose_event_t const&>(event).count == 0)
            redraw();
        break;
    case XCB_CONFIGURE_NOTIFY:
        handleConfigure(reinterpret_cast<xcb_configure_notify_event_t const&>(event));
        break;
    case XCB_REPARENT_NOTIFY:
        handleReparent(reinterpret_cast<xcb_reparent_notify_event_t const&>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        m_isGone = true;
        leave();
        break;
    case XCB_BUTTON_PRESS:
        handlePress(reinterpret_cast<xcb_button_press_event_t const&>(event));
        break;
    default:
        break;
    }
}

void X11TrayIcon::handleConfigure(xcb_configure_notify_event_t const& event)
{
    if (event.width == m_width && event.height == m_height)
        return;
    m_width = event.width;
    m_height = event.height;
    // As thick as the tray is; its other direction is ours to say. Once, so that a tray with a will of its own has it.
    int const thickness = m_tray.look().isVertical ? m_width : m_height;
    if (m_isDocked && m_width != m_height && std::exchange(m_requestedSide, thickness) != thickness)
        requestSide(thickness);
    redraw();
}

void X11TrayIcon::handleReparent(xcb_reparent_notify_event_t const& event)
{
    if (event.parent == m_connection.root()) {
        leave();
        return;
    }
    if (!std::exchange(m_isDocked, true) && m_observer.didDock) {
        auto const didDock = m_observer.didDock;
        didDock();
    }
}

void X11TrayIcon::handlePress(xcb_button_press_event_t const& event)
{
    if (event.detail != leftButton && event.detail != rightButton)
        return;
    m_connection.noteUserTime(event.time);
    Press const press { event.detail == leftButton ? Press::Button::Left : Press::Button::Right,
        { event.root_x - event.event_x, event.root_y - event.event_y, m_width, m_height }, event.time };
    auto const didPress = m_observer.didPress;
    if (didPress)
        didPress(press);
}

void X11TrayIcon::leave()
{
    m_isDocked = false;
    auto const didLeave = m_observer.didLeave;
    if (didLeave)
        didLeave();
}

void X11TrayIcon::redraw()
{
    if (!m_isDocked || !m_observer.picture)
        return;
    m_painter.paint(m_window, m_visual, { 0, 0, m_width, m_height }, m_observer.picture(std::min(m_width, m_height)));
}

} // namespace backends
