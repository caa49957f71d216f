#include "backends/linux/x11/X11World.h"

// Who an event of the server concerns.

namespace backends {

namespace {

// Directions of _NET_WM_MOVERESIZE: the eight edges, then others.
constexpr std::uint32_t lastResizeDirection = 7;

} // namespace

void X11World::handleEvent(xcb_generic_event_t const& event)
{
    m_desktop.handle(event);
    m_screen.handle(event);
    m_keyboard.handle(event);
    // A key that the monitors keep from everybody else is decided there first.
    if (m_monitors.holdsKeyboard() || !m_hotKeys.handle(event))
        m_monitors.handle(event);
    m_tray.handle(event);
    m_buttons.handle(event);
    handleWindowEvent(event);
}

void X11World::handleWindowEvent(xcb_generic_event_t const& event)
{
    auto const root = m_connection->root();
    bool const isSent = (event.response_type & 0x80) != 0;
    switch (event.response_type & 0x7F) {
    case XCB_CREATE_NOTIFY:
        m_finder.handleCreate(reinterpret_cast<xcb_create_notify_event_t const&>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        handleDestroy(reinterpret_cast<xcb_destroy_notify_event_t const&>(event).window);
        break;
    // Children of the root tell everything twice, once to the root's listeners.
    case XCB_MAP_NOTIFY: {
        auto const& map = reinterpret_cast<xcb_map_notify_event_t const&>(event);
        if (auto const found = window(map.window); found && map.event == map.window)
            found->handleMap();
        break;
    }
    case XCB_UNMAP_NOTIFY: {
        auto const& unmap = reinterpret_cast<xcb_unmap_notify_event_t const&>(event);
        auto const found = window(unmap.window);
        if (found && isSent && unmap.event == root)
            found->handleWithdrawMessage();
        else if (found && unmap.event == unmap.window)
            found->handleUnmap();
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        auto const& reparent = reinterpret_cast<xcb_reparent_notify_event_t const&>(event);
        if (auto const found = window(reparent.window); found && reparent.event == reparent.window)
            found->handleReparent(reparent.parent);
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        auto const& configure = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        auto const found = window(configure.window);
        if (found && configure.event == configure.window)
            found->handleConfigure(configure, m_buttons.isDown());
        else if (!found && configure.event == root && configure.window != root)
            forEachWindow([&](X11Window& inside) { inside.handleParentConfigure(configure); });
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        auto const& property = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        if (auto const found = window(property.window))
            found->handleProperty(property.atom);
        break;
    }
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        handleFocus(reinterpret_cast<xcb_focus_in_event_t const&>(event));
        break;
    case XCB_CLIENT_MESSAGE:
        handleMessage(reinterpret_cast<xcb_client_message_event_t const&>(event));
        break;
    default:
        if (auto const found = window(unshapedWindow(event, m_connection->shape())))
            found->shapeWasTakenOff();
        break;
    }
}

void X11World::handleFocus(xcb_focus_in_event_t const& event)
{
    // A grab takes the keyboard for a moment only, and below the window the focus is the toolkit's affair.
    if (event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB
        || event.detail == XCB_NOTIFY_DETAIL_INFERIOR || event.detail == XCB_NOTIFY_DETAIL_POINTER)
        return;
    if ((event.response_type & 0x7F) == XCB_FOCUS_IN)
        m_focused = event.event;
    else if (m_focused == event.event)
        m_focused = XCB_WINDOW_NONE;
    updateKeyWindow();
}

void X11World::handleMessage(xcb_client_message_event_t const& event)
{
    if (event.type != m_connection->atom(AtomName::NET_WM_MOVERESIZE) || event.format != 32)
        return;
    auto const found = window(event.window);
    // A toolkit that draws its own edges asks the window manager to drag one.
    if (found && found->wantsLiveResize() && m_buttons.isDown() && event.data.data32[2] <= lastResizeDirection)
        found->liveResize().start();
}

void X11World::handleDestroy(xcb_window_t xid)
{
    // Holds the window to the end of its last report.
    if (auto const found = window(xid))
        remove(found);
    else
        m_hotKeys.somebodyMayHaveGone();
}

} // namespace backends
