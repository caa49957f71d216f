#pragma once

#include "platform/carbon/EventHotKeys.h"

#include <array>
#include <cstdint>

namespace backends {

// One modifier of a hot key, and the key that stands for it.
struct HotKeyModifier {
    std::uint32_t bit = 0;
    platform::ModifierKey key {};
};

// All four, in the order of menus.
inline std::array<HotKeyModifier, 4> hotKeyModifiers(platform::HotKeyModifierKeys const& keys)
{
    return { { { platform::controlKey, keys.control }, { platform::optionKey, keys.option },
        { platform::shiftKey, keys.shift }, { platform::cmdKey, keys.command } } };
}

} // namespace backends
