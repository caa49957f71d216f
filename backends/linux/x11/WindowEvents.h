#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <xcb/xcb.h>

namespace backends {

// Hands the events of a window to who made the window or watches it, by the window that the server sent them to.
// Several may listen at one window; they are called in the order in which they began. Main thread only.
class WindowEvents {
public:
    using Handler = std::function<void(xcb_generic_event_t const&)>;

    // Ends with its destructor, also from inside a handler. It may outlive the table.
    class [[nodiscard]] Registration {
    public:
        Registration() = default;

    private:
        friend class WindowEvents;
        explicit Registration(std::shared_ptr<Handler> handler)
            : m_handler(std::move(handler))
        {
        }
        std::shared_ptr<Handler> m_handler;
    };

    // Which events come is up to the window's event mask.
    Registration listen(xcb_window_t window, Handler handler);
    void handle(xcb_generic_event_t const& event);

private:
    std::multimap<xcb_window_t, std::weak_ptr<Handler>> m_handlers;
};

} // namespace backends
