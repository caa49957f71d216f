#include "backends/linux/x11/PointerButtons.h"

#include "backends/linux/x11/Connection.h"

#include <utility>
#include <xcb/xinput.h>

namespace backends {

namespace {

// What comes after is the wheel.
constexpr std::uint32_t lastDraggingButton = 3;

} // namespace

PointerButtons::PointerButtons(Connection& connection, std::function<void()> wereReleased)
    : m_connection(connection)
    , m_wereReleased(std::move(wereReleased))
{
}

void PointerButtons::setWatched(bool isWatched)
{
    if (!m_connection.input().isPresent || std::exchange(m_isWatched, isWatched) == isWatched)
        return;
    m_down.clear();
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection {};
    selection.head.deviceid = XCB_INPUT_DEVICE_ALL_MASTER;
    selection.head.mask_len = 1;
    if (isWatched)
        selection.mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    xcb_input_xi_select_events(m_connection.wire(), m_connection.root(), 1, &selection.head);
}

void PointerButtons::handle(xcb_generic_event_t const& event)
{
    if ((event.response_type & 0x7F) != XCB_GE_GENERIC)
        return;
    auto const& generic = reinterpret_cast<xcb_ge_generic_event_t const&>(event);
    if (generic.extension != m_connection.input().majorOpcode)
        return;
    bool const isPress = generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS;
    if (!isPress && generic.event_type != XCB_INPUT_RAW_BUTTON_RELEASE)
        return;
    auto const& button = reinterpret_cast<xcb_input_raw_button_press_event_t const&>(event);
    m_connection.noteUserTime(button.time);
    if (button.detail > lastDraggingButton)
        return;
    if (isPress) {
        m_down.insert(button.detail);
        return;
    }
    if (m_down.erase(button.detail) > 0 && m_down.empty())
        m_wereReleased();
}

} // namespace backends
