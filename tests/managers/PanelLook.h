#pragma once

#include "tests/linux/Client.h"

#include <ostream>

namespace paneweld_tests {

// What anybody can see of a panel, whatever the toolkit and the window manager are.

inline std::ostream& operator<<(std::ostream& stream, Geometry const& place)
{
    return stream << place.x << "," << place.y << " " << place.width << "x" << place.height;
}

// The part of the screen that the user's panels and docks leave free (EWMH, _NET_WORKAREA).
Geometry workArea(Client& client);
// Where a panel first shows: 640 by 91 points, in the middle, 84 points above the lower edge of that part.
Geometry firstPlaceOfPanel(Client& client);
// The same panel when it is higher: it grows at its top.
Geometry grownTo(Geometry place, int height);
// Where the window is on the screen, without what its toolkit draws around it (_GTK_FRAME_EXTENTS).
Geometry visiblePlace(Client& client, xcb_window_t window);
// Nothing of the window manager's is around it.
bool isBorderless(Client& client, xcb_window_t window);
// EWMH, _NET_WM_DESKTOP and _NET_WM_STATE_STICKY.
bool isOnAllDesktops(Client& client, xcb_window_t window);

} // namespace paneweld_tests
