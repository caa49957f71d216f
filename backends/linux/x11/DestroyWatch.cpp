#include "backends/linux/x11/DestroyWatch.h"

#include <utility>

namespace backends {

namespace {

void askMask(
    Connection& connection, xcb_window_t window, std::function<void(xcb_get_window_attributes_reply_t const*)> handle)
{
    auto const cookie = xcb_get_window_attributes(connection.wire(), window);
    connection.ask<xcb_get_window_attributes_reply_t>(cookie.sequence, std::move(handle));
}

} // namespace

DestroyWatch::DestroyWatch(Connection& connection, xcb_window_t window, std::function<void()> destroyed)
    : m_connection(connection)
    , m_window(window)
    , m_destroyed(std::move(destroyed))
{
    m_registration = m_connection.windowEvents().listen(window, [this](xcb_generic_event_t const& event) {
        if ((event.response_type & 0x7F) != XCB_DESTROY_NOTIFY)
            return;
        // The parent's listeners hear of it as well, under the parent's name.
        if (reinterpret_cast<xcb_destroy_notify_event_t const&>(event).window == m_window)
            report();
    });
    askMask(m_connection, window, [this, life = std::weak_ptr<bool>(m_life)](auto const* attributes) {
        if (life.expired())
            return;
        if (!attributes)
            report();
        else if ((attributes->your_event_mask & XCB_EVENT_MASK_STRUCTURE_NOTIFY) == 0)
            widen(attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    });
}

DestroyWatch::~DestroyWatch()
{
    if (!m_hasWidened || !m_destroyed)
        return;
    // Only where nobody else has come to listen meanwhile, who may count on what was chosen here. It need not show in
    // the mask: a watch that followed at once has found what it wants, and leaves it as it is.
    askMask(m_connection, m_window, [&connection = m_connection, window = m_window](auto const* attributes) {
        std::uint32_t const nothing = XCB_EVENT_MASK_NO_EVENT;
        if (attributes && attributes->your_event_mask == XCB_EVENT_MASK_STRUCTURE_NOTIFY
            && !connection.windowEvents().hasListeners(window))
            xcb_change_window_attributes(connection.wire(), window, XCB_CW_EVENT_MASK, &nothing);
    });
}

void DestroyWatch::widen(std::uint32_t mask)
{
    m_hasWidened = true;
    auto const cookie = xcb_change_window_attributes(m_connection.wire(), m_window, XCB_CW_EVENT_MASK, &mask);
    // The window may have gone in between, and then nothing else will tell.
    m_connection.askOutcome({ cookie.sequence }, [this, life = std::weak_ptr<bool>(m_life)](auto const* error) {
        if (error && !life.expired())
            report();
    });
}

void DestroyWatch::report()
{
    m_registration = {};
    if (auto const destroyed = std::exchange(m_destroyed, nullptr))
        destroyed();
}

} // namespace backends
