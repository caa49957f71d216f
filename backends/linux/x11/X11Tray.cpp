#include "backends/linux/x11/X11Tray.h"

#include "backends/linux/x11/ClientProcess.h"
#include "backends/linux/x11/PropertyValues.h"

#include <memory>
#include <utility>
#include <xcb/xfixes.h>

namespace backends {

namespace {

// _NET_SYSTEM_TRAY_OPCODE's first message, and the value of a vertical tray's _NET_SYSTEM_TRAY_ORIENTATION.
constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t verticalOrientation = 1;

// _NET_SYSTEM_TRAY_COLORS: four colours of three numbers of 16 bits each; the first is the foreground.
std::optional<std::uint32_t> foregroundIn(xcb_get_property_reply_t const* reply)
{
    auto const words = wordsOf(reply);
    if (words.size() < 3)
        return std::nullopt;
    auto const byteOf = [](std::uint32_t channel) { return channel >> 8 & 0xFF; };
    return byteOf(words[0]) << 16 | byteOf(words[1]) << 8 | byteOf(words[2]);
}

} // namespace

X11Tray::X11Tray(Connection& connection)
    : m_connection(connection)
{
}

void X11Tray::start()
{
    if (m_connection.fixes().isPresent) {
        xcb_xfixes_select_selection_input(m_connection.wire(), m_connection.root(), m_connection.atoms().tray(),
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    readOwner();
}

void X11Tray::handle(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (m_connection.fixes().isPresent && type == m_connection.fixes().firstEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_xfixes_selection_notify_event_t const&>(event);
        if (change.selection == m_connection.atoms().tray())
            follow(change.owner);
        return;
    }
    if (type != XCB_CLIENT_MESSAGE)
        return;
    // The owner's own announcement, which says the same where nobody else does.
    auto const& message = reinterpret_cast<xcb_client_message_event_t const&>(event);
    if (message.window == m_connection.root() && message.type == m_connection.atom(AtomName::MANAGER)
        && message.format == 32 && message.data.data32[1] == m_connection.atoms().tray())
        readOwner();
}

void X11Tray::connectionWasLost() { set({}); }

void X11Tray::readOwner()
{
    auto const cookie = xcb_get_selection_owner(m_connection.wire(), m_connection.atoms().tray());
    m_connection.ask<xcb_get_selection_owner_reply_t>(cookie.sequence,
        [this](auto const* reply) { follow(reply ? reply->owner : xcb_window_t { XCB_WINDOW_NONE }); });
}

void X11Tray::follow(xcb_window_t window)
{
    if (std::exchange(m_followed, window) == window)
        return;
    m_events = {};
    if (window == XCB_WINDOW_NONE) {
        set({});
        return;
    }
    m_events = m_connection.windowEvents().listen(window, [this](auto const& event) { handleOwnerEvent(event); });
    std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection.wire(), window, XCB_CW_EVENT_MASK, &mask);
    read(window);
}

void X11Tray::handleOwnerEvent(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (type == XCB_DESTROY_NOTIFY) {
        follow(XCB_WINDOW_NONE);
        return;
    }
    if (type != XCB_PROPERTY_NOTIFY)
        return;
    // Some tell their look only after they have announced themselves.
    auto const property = reinterpret_cast<xcb_property_notify_event_t const&>(event).atom;
    for (auto const name :
        { AtomName::NET_SYSTEM_TRAY_ORIENTATION, AtomName::NET_SYSTEM_TRAY_VISUAL, AtomName::NET_SYSTEM_TRAY_COLORS }) {
        if (property == m_connection.atom(name)) {
            read(m_followed);
            return;
        }
    }
}

void X11Tray::read(xcb_window_t window)
{
    auto const found = std::make_shared<Owner>();
    found->window = window;
    if (m_connection.resources().isPresent) {
        m_connection.ask<xcb_res_query_client_ids_reply_t>(askProcess(m_connection, window).sequence,
            [found](auto const* reply) { found->process = processIn(reply); });
    }
    m_connection.askProperty(
        window, m_connection.atom(AtomName::NET_SYSTEM_TRAY_ORIENTATION), [found](auto const* reply) {
            auto const words = wordsOf(reply);
            found->look.isVertical = !words.empty() && words[0] == verticalOrientation;
        });
    m_connection.askProperty(window, m_connection.atom(AtomName::NET_SYSTEM_TRAY_VISUAL), [found](auto const* reply) {
        auto const words = wordsOf(reply);
        found->look.visual = words.empty() ? 0 : words[0];
    });
    m_connection.askProperty(
        window, m_connection.atom(AtomName::NET_SYSTEM_TRAY_COLORS), [this, found](auto const* reply) {
            found->look.foreground = foregroundIn(reply);
            if (found->window == m_followed)
                set(*found);
        });
}

void X11Tray::set(Owner owner)
{
    if (std::exchange(m_owner, owner) == owner)
        return;
    // A copy: it may lead to another observer.
    if (auto const didChange = m_didChange)
        didChange();
}

void X11Tray::askForDock(xcb_window_t icon)
{
    m_connection.send(owner(), { owner(), AtomName::NET_SYSTEM_TRAY_OPCODE, { XCB_CURRENT_TIME, requestDock, icon } });
}

} // namespace backends
