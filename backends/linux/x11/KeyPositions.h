#pragma once

#include <cstdint>
#include <span>

namespace backends {

// One key of the ANSI keyboard: its virtual key code, and the name of the position in the keyboard extension of X.
struct KeyPosition {
    std::uint16_t virtualKeyCode;
    char const* name;
};

std::span<KeyPosition const> keyPositions();

} // namespace backends
