#include "backends/linux/x11/ServerClock.h"

#include <charconv>
#include <optional>

namespace backends {

namespace {

// The end of a token that is an identifier of the Startup Notification Protocol.
std::optional<xcb_timestamp_t> timeIn(std::string_view token)
{
    constexpr std::string_view mark = "_TIME";
    auto const place = token.rfind(mark);
    if (place == std::string_view::npos)
        return std::nullopt;
    auto const digits = token.substr(place + mark.size());
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), time);
    bool const isTime = error == std::errc() && end == digits.data() + digits.size() && time != XCB_CURRENT_TIME;
    return isTime ? std::optional(time) : std::nullopt;
}

} // namespace

ServerClock::ServerClock(Connection& connection)
    : m_connection(connection)
{
}

void ServerClock::noteUserAct(std::string_view activationToken)
{
    if (auto const time = timeIn(activationToken))
        m_connection.noteUserTime(*time);
    else
        noteNow();
}

void ServerClock::noteNow()
{
    if (!m_connection.isAlive())
        return;
    // Which means: when the window manager hears of it. What comes forward later had better say a time.
    m_connection.noteUserTime(XCB_CURRENT_TIME);
    auto* const wire = m_connection.wire();
    if (m_window == XCB_WINDOW_NONE) {
        m_window = xcb_generate_id(wire);
        std::uint32_t const values[] = { 1, XCB_EVENT_MASK_PROPERTY_CHANGE };
        xcb_create_window(wire, XCB_COPY_FROM_PARENT, m_window, m_connection.root(), -1, -1, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        m_events = m_connection.windowEvents().listen(m_window, [this](xcb_generic_event_t const& event) {
            auto const time = reinterpret_cast<xcb_property_notify_event_t const&>(event).time;
            bool const isPropertyNotify = (event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY;
            // Of something that the user did meanwhile the time is known already.
            if (isPropertyNotify && m_connection.latestUserTime() == XCB_CURRENT_TIME)
                m_connection.noteUserTime(time);
        });
    }
    xcb_change_property(wire, XCB_PROP_MODE_APPEND, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
}

} // namespace backends
