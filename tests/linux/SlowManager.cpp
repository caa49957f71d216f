#include "tests/linux/SlowManager.h"

#include "backends/linux/x11/Handles.h"

#include <array>

namespace paneweld_tests {

SlowManager::SlowManager(std::string const& display)
    : Client(display)
{
    std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    xcb_change_window_attributes(wire(), root(), XCB_CW_EVENT_MASK, &mask);
    sync();
}

std::size_t SlowManager::look()
{
    while (backends::XHandle<xcb_generic_event_t> const event { xcb_poll_for_event(wire()) }) {
        if ((event->response_type & 0x7F) == XCB_CONFIGURE_REQUEST)
            m_requests.push_back(*reinterpret_cast<xcb_configure_request_event_t const*>(event.get()));
    }
    return m_requests.size();
}

void SlowManager::answer()
{
    auto const request = m_requests.front();
    m_requests.pop_front();
    std::array<std::uint32_t, 4> const values { static_cast<std::uint32_t>(request.x),
        static_cast<std::uint32_t>(request.y), request.width, request.height };
    xcb_configure_window(wire(), request.window,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    sync();
}

} // namespace paneweld_tests
