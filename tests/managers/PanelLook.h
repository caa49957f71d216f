#pragma once

#include "tests/linux/Client.h"

#include <ostream>

namespace paneweld_tests {

// What anybody can see of a panel, whatever the toolkit and the window manager are.

inline std::ostream& operator<<(std::ostream& stream, Geometry const& place)
{
    return stream << place.x << "," << place.y << " " << place.width << "x" << place.height;
}

// Where the window is on the screen, without what its toolkit draws around it (_GTK_FRAME_EXTENTS).
Geometry visiblePlace(Client& client, xcb_window_t window);
// Nothing of the window manager's is around it.
bool isBorderless(Client& client, xcb_window_t window);
// EWMH, _NET_WM_DESKTOP and _NET_WM_STATE_STICKY.
bool isOnAllDesktops(Client& client, xcb_window_t window);

} // namespace paneweld_tests
