#pragma once

#include "platform/appkit/NSEventModifierFlags.h"

#include <cstdint>
#include <string>

// Modifier keys as events carry them, as the hot-key service wants them, and as menus show them. Command, option,
// control and shift are all there is to a hot key: other bits of either side are dropped. Any thread.
namespace hotkey {

platform::NSEventModifierFlags modifierFlags(std::uint32_t carbon);
std::uint32_t carbon(platform::NSEventModifierFlags flags);

// The symbols in the order of menus, which is not that of the bits: "⌃⌥⇧⌘". Empty for none.
std::string description(platform::NSEventModifierFlags flags);

} // namespace hotkey
