#pragma once

#include "backends/linux/x11/KeyboardMap.h"
#include "platform/appkit/NSMenuItem.h"

#include <cstdint>
#include <optional>
#include <string>

namespace backends {

// What the keys of a keyboard mean to an open menu.

enum class MenuKey { Up, Down, First, Last, Choose, Cancel };

// One press of a key, and the keyboard that it was pressed on.
struct MenuKeyPress {
    KeyboardMap const& map;
    xcb_keycode_t keycode = 0;
    std::uint16_t state = 0;

    // The modifiers that are held, without any locks.
    std::uint8_t modifiers() const;
};

// Absent for a key that moves nothing. The keypad counts, whatever Num Lock says.
std::optional<MenuKey> menuKey(MenuKeyPress const& press);

// What stands beside an item: "Ctrl+Q". Empty for an item that no key chooses.
std::string shortcutText(platform::NSMenuItem const& item);

// Whether the press is the item's key with exactly its modifiers. Under a layout that does not write the character the
// place counts where the first layout has it.
bool isShortcut(platform::NSMenuItem const& item, MenuKeyPress const& press);

// Whether the press types the first letter of a title, with no modifier but Shift.
bool isInitial(std::string const& title, MenuKeyPress const& press);

} // namespace backends
