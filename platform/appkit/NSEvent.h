#pragma once

#include "platform/appkit/NSEventModifierFlags.h"

#include <cstdint>
#include <memory>

namespace platform {

class NSWindow;

enum class EventType : std::uint8_t { LeftMouseDown = 1, RightMouseDown = 3, KeyDown = 10, KeyUp = 11 };

// Sets of event types, one bit each: 1 shifted left by the type.
enum class EventMask : std::uint64_t { KeyDown = 1u << 10, KeyUp = 1u << 11 };

// A key that was pressed or let go while one of the process's windows had the keyboard, or a press of the mouse on a
// view, of which nothing more than its type counts.
struct NSEvent {
    EventType type = EventType::KeyDown;
    // The virtual key code: a position on the ANSI keyboard, whatever the layout writes on it. 53 is Escape.
    std::uint16_t keyCode = 0;
    NSEventModifierFlags modifierFlags {};
    // The window that had the keyboard. May be absent.
    std::weak_ptr<NSWindow> window {};
};

constexpr std::uint16_t keyCodeEscape = 53;

} // namespace platform
