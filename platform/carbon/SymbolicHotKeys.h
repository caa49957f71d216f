#pragma once

#include "platform/carbon/CarbonEvent.h"
#include "platform/foundation/Value.h"

#include <optional>

namespace platform {

// Keys of the dictionaries below.
constexpr char const* kHISymbolicHotKeyEnabled = "kHISymbolicHotKeyEnabled";
constexpr char const* kHISymbolicHotKeyCode = "kHISymbolicHotKeyCode";
constexpr char const* kHISymbolicHotKeyModifiers = "kHISymbolicHotKeyModifiers";

// The shortcuts that the system keeps for itself, as the user has set them.
class SymbolicHotKeys {
public:
    virtual ~SymbolicHotKeys() = default;

    struct Copied {
        OSStatus status = noErr;
        // One dictionary a shortcut: whether it is on (boolean), its virtual key code and its modifier bits (numbers).
        std::optional<List> array {};
    };
    // CopySymbolicHotKeys. Any thread; it may take some milliseconds and reads the settings as they are now.
    virtual Copied copySymbolicHotKeys() = 0;
};

} // namespace platform
