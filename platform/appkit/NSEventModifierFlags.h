#pragma once

#include <cstdint>

namespace platform {

// The modifier keys that were held during an event, or that a menu item wants held. A set of bits; those without a
// name here may be there too.
struct NSEventModifierFlags {
    std::uint64_t rawValue = 0;

    static NSEventModifierFlags const capsLock;
    static NSEventModifierFlags const shift;
    static NSEventModifierFlags const control;
    static NSEventModifierFlags const option;
    static NSEventModifierFlags const command;

    constexpr bool contains(NSEventModifierFlags flags) const { return (rawValue & flags.rawValue) == flags.rawValue; }
    constexpr NSEventModifierFlags operator|(NSEventModifierFlags other) const { return { rawValue | other.rawValue }; }
    constexpr NSEventModifierFlags operator&(NSEventModifierFlags other) const { return { rawValue & other.rawValue }; }
    constexpr NSEventModifierFlags& operator|=(NSEventModifierFlags other) { return *this = *this | other; }
    constexpr bool operator==(NSEventModifierFlags const&) const = default;
};

inline constexpr NSEventModifierFlags NSEventModifierFlags::capsLock { 0x10000 };
inline constexpr NSEventModifierFlags NSEventModifierFlags::shift { 0x20000 };
inline constexpr NSEventModifierFlags NSEventModifierFlags::control { 0x40000 };
inline constexpr NSEventModifierFlags NSEventModifierFlags::option { 0x80000 };
inline constexpr NSEventModifierFlags NSEventModifierFlags::command { 0x100000 };

} // namespace platform
