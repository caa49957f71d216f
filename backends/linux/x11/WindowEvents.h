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

    // Ends with its destructor, also from inside a handler: what is dispatched from in there does not reach it any
    // more. It may outlive the table.
    class [[nodiscard]] Registration {
    public:
        Registration() = default;
        ~Registration() { end(); }
        Registration(Registration&&) noexcept = default;
        Registration& operator=(Registration&& other) noexcept
        {
            end();
            m_listener = std::move(other.m_listener);
            return *this;
        }

    private:
        friend class WindowEvents;
        struct Listener {
            Handler handler;
            bool isListening = true;
        };
        explicit Registration(std::shared_ptr<Listener> listener)
            : m_listener(std::move(listener))
        {
        }
        void end()
        {
            if (m_listener)
                m_listener->isListening = false;
        }

        std::shared_ptr<Listener> m_listener;
    };

    // Which events come is up to the window's event mask.
    Registration listen(xcb_window_t window, Handler handler);
    bool hasListeners(xcb_window_t window) const;
    void handle(xcb_generic_event_t const& event);

private:
    std::multimap<xcb_window_t, std::shared_ptr<Registration::Listener>> m_listeners;
};

} // namespace backends
