#include "hotkey/NSEventModifierFlags+HotKey.h"

#include "platform/carbon/EventHotKeys.h"

namespace hotkey {

using platform::NSEventModifierFlags;

namespace {

struct Modifier {
    NSEventModifierFlags flag;
    std::uint32_t carbon;
    char const* symbol;
};

// In the order of menus.
constexpr Modifier modifiers[] = {
    { NSEventModifierFlags::control, platform::controlKey, "⌃" },
    { NSEventModifierFlags::option, platform::optionKey, "⌥" },
    { NSEventModifierFlags::shift, platform::shiftKey, "⇧" },
    { NSEventModifierFlags::command, platform::cmdKey, "⌘" },
};

} // namespace

NSEventModifierFlags modifierFlags(std::uint32_t carbon)
{
    NSEventModifierFlags flags;
    for (auto const& modifier : modifiers) {
        if (carbon & modifier.carbon)
            flags |= modifier.flag;
    }
    return flags;
}

std::uint32_t carbon(NSEventModifierFlags flags)
{
    std::uint32_t bits = 0;
    for (auto const& modifier : modifiers) {
        if (flags.contains(modifier.flag))
            bits |= modifier.carbon;
    }
    return bits;
}

std::string description(NSEventModifierFlags flags)
{
    std::string symbols;
    for (auto const& modifier : modifiers) {
        if (flags.contains(modifier.flag))
            symbols += modifier.symbol;
    }
    return symbols;
}

} // namespace hotkey
