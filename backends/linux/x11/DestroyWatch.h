#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <xcb/xcb.h>

namespace backends {

// Learns that a window which somebody else made is gone. What this connection hears of the window otherwise stays as it
// is: one connection has one event mask a window, and others here may listen at it too. Main thread only.
class DestroyWatch {
public:
    // Called once, also when there is no such window; never from inside the constructor. It may drop the watch.
    DestroyWatch(Connection& connection, xcb_window_t window, std::function<void()> destroyed);
    ~DestroyWatch();
    DestroyWatch(DestroyWatch const&) = delete;
    DestroyWatch& operator=(DestroyWatch const&) = delete;

private:
    void widen(std::uint32_t mask);
    void report();

    Connection& m_connection;
    xcb_window_t m_window;
    std::function<void()> m_destroyed;
    bool m_hasWidened = false;
    WindowEvents::Registration m_registration;
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace backends
