#include "backends/linux/x11/WindowEvents.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace backends {

namespace {

// The window that the server or another client sent the event to; none for events of no window.
xcb_window_t windowOf(xcb_generic_event_t const& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_MOTION_NOTIFY:
        return reinterpret_cast<xcb_button_press_event_t const&>(event).event;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        return reinterpret_cast<xcb_enter_notify_event_t const&>(event).event;
    case XCB_SELECTION_NOTIFY:
        return reinterpret_cast<xcb_selection_notify_event_t const&>(event).requestor;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
    case XCB_EXPOSE:
    case XCB_VISIBILITY_NOTIFY:
    case XCB_DESTROY_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_PROPERTY_NOTIFY:
    case XCB_CLIENT_MESSAGE:
        // All of these begin with the window.
        return reinterpret_cast<xcb_property_notify_event_t const&>(event).window;
    default:
        return XCB_WINDOW_NONE;
    }
}

} // namespace

WindowEvents::Registration WindowEvents::listen(xcb_window_t window, Handler handler)
{
    std::erase_if(m_listeners, [](auto const& entry) { return !entry.second->isListening; });
    auto const listener = std::make_shared<Registration::Listener>(Registration::Listener { std::move(handler) });
    m_listeners.emplace(window, listener);
    return Registration(listener);
}

bool WindowEvents::hasListeners(xcb_window_t window) const
{
    auto const [begin, end] = m_listeners.equal_range(window);
    return std::any_of(begin, end, [](auto const& entry) { return entry.second->isListening; });
}

void WindowEvents::handle(xcb_generic_event_t const& event)
{
    auto const window = windowOf(event);
    if (window == XCB_WINDOW_NONE)
        return;
    // A copy: a handler may begin or end any of them. One that ended before its turn is not called.
    std::vector<std::shared_ptr<Registration::Listener>> concerned;
    for (auto [entry, end] = m_listeners.equal_range(window); entry != end; ++entry)
        concerned.push_back(entry->second);
    for (auto const& listener : concerned) {
        if (listener->isListening)
            listener->handler(event);
    }
}

} // namespace backends
