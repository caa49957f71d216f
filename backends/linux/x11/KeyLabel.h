#pragma once

#include <optional>
#include <string>
#include <xcb/xproto.h>

namespace backends {

// What is printed on a key, in UTF-8 and as keyboards print it, from the symbol that the key types without modifiers:
// "A", "É", "Й", "&". Absent for symbols that are no visible text: Return, F5, the space bar, the digits of a keypad.
std::optional<std::string> keyLabel(xcb_keysym_t symbol);

} // namespace backends
