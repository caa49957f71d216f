#pragma once

#include "platform/appkit/NSMenuItem.h"
#include "platform/carbon/HotKeyTruth.h"

#include <string>
#include <vector>

namespace backends {

// What chooses an item of a menu from the keyboard of a desktop that has no command key.
struct MenuShortcut {
    // In the order of menus.
    std::vector<platform::ModifierKey> modifiers {};
    // A letter is a small one. Empty for an item that no key chooses.
    std::string character {};
};

// Command is Control there, which does its work, and Control is Super, which has none. A capital letter says Shift.
MenuShortcut menuShortcutOf(platform::NSMenuItem const& item);

} // namespace backends
