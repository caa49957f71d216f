#pragma once

#include "backends/linux/x11/Connection.h"

#include <string_view>
#include <xcb/xcb.h>

namespace backends {

// Knows when the user did something of which the server tells us nothing: a click into a desktop's panel, or a shortcut
// that the desktop keeps. Window managers let windows come forward by that time, and refuse an earlier one when the
// user has typed elsewhere since. Main thread only.
class ServerClock {
public:
    explicit ServerClock(Connection& connection);

    // Just now, or when the desktop's activation token says so.
    void noteUserAct(std::string_view activationToken);

private:
    void noteNow();

    Connection& m_connection;
    // The server tells its time with events alone: a property of this window is changed for one (ICCCM, section 2.1).
    xcb_window_t m_window = XCB_WINDOW_NONE;
    WindowEvents::Registration m_events;
};

} // namespace backends
