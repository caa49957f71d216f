#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace backends {

// Where a key symbol lies on an ANSI keyboard with the layout of the United States: virtual key codes, none for a key
// that such a keyboard does not have. What stands above another character counts as that key. Any thread.
std::vector<std::uint16_t> ansiKeyCodes(std::uint32_t keysym);

// The way back: what such a key writes without Shift. Absent for a key that writes nothing.
std::optional<std::uint32_t> ansiKeysym(std::uint32_t virtualKeyCode);

} // namespace backends
