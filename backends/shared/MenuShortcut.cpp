#include "backends/shared/MenuShortcut.h"

namespace backends {

using platform::ModifierKey;
using platform::NSEventModifierFlags;

MenuShortcut menuShortcutOf(platform::NSMenuItem const& item)
{
    MenuShortcut shortcut { {}, item.keyEquivalent() };
    auto& character = shortcut.character;
    auto flags = item.keyEquivalentModifierMask();
    if (character.size() == 1 && character[0] >= 'A' && character[0] <= 'Z') {
        character[0] = static_cast<char>(character[0] - 'A' + 'a');
        flags |= NSEventModifierFlags::shift;
    }
    if (flags.contains(NSEventModifierFlags::command))
        shortcut.modifiers.push_back(ModifierKey::Control);
    if (flags.contains(NSEventModifierFlags::option))
        shortcut.modifiers.push_back(ModifierKey::Alt);
    if (flags.contains(NSEventModifierFlags::shift))
        shortcut.modifiers.push_back(ModifierKey::Shift);
    if (flags.contains(NSEventModifierFlags::control))
        shortcut.modifiers.push_back(ModifierKey::Super);
    return shortcut;
}

} // namespace backends
