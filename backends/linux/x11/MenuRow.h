#pragma once

#include "backends/linux/x11/MenuLayout.h"
#include "platform/appkit/NSMenuItem.h"

#include <string>

namespace backends {

// One row of a menu as it is written there.
struct MenuRow {
    MenuLayout::Row kind = MenuLayout::Row::Enabled;
    std::string title {};
    std::string shortcut {};
    bool hasSubmenu = false;

    // What an item looks like now. One with a menu of its own cannot be chosen: there is no second menu here.
    static MenuRow of(platform::NSMenuItem const& item);
};

} // namespace backends
