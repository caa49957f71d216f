#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <xcb/xcb.h>

namespace backends {

class Connection;

// Which buttons of the pointer are held, also while a window manager has grabbed it (raw events of XInput 2). Watched
// only while somebody asks, because every click anywhere wakes the process.
class PointerButtons {
public:
    PointerButtons(Connection& connection, std::function<void()> wereReleased);

    void setWatched(bool isWatched);
    bool isWatched() const { return m_isWatched; }
    bool isDown() const { return !m_down.empty(); }

    void handle(xcb_generic_event_t const& event);

private:
    Connection& m_connection;
    std::function<void()> m_wereReleased;
    std::set<std::uint32_t> m_down;
    bool m_isWatched = false;
};

} // namespace backends
