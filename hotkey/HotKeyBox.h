#pragma once

#include "platform/carbon/EventHotKeys.h"
#include "platform/foundation/UUID.h"

#include <cstdint>
#include <memory>

namespace hotkey {

class HotKey;

// One registration, from the moment before the system is asked to the moment after it is ended.
struct HotKeyBox {
    // What a hot key is found by while it is destroyed, when the reference below has expired already.
    platform::UUID identifier;
    // Weak: the table never keeps a hot key alive.
    std::weak_ptr<HotKey> hotKey;
    std::uint32_t carbonHotKeyID = 0;
    // Null until the system granted it, and for good when it did not.
    platform::EventHotKeyRef carbonEventHotKey {};
};

} // namespace hotkey
