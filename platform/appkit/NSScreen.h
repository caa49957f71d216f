#pragma once

#include "platform/foundation/Geometry.h"

namespace platform {

// A monitor: all of it, and what panels and docks leave of it. Points, y upward from the bottom of the desktop.
struct NSScreen {
    Rect frame;
    Rect visibleFrame;

    bool operator==(NSScreen const&) const = default;
};

} // namespace platform
