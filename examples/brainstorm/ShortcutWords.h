#pragma once

#include "hotkey/KeyCombo.h"
#include "platform/carbon/HotKeyTruth.h"

#include <optional>
#include <string>
#include <vector>

namespace ideas {

// A shortcut, and what is true of it, in words and signs for the user.

// One text a key, as on key caps: "⌃", "⌥", "N".
std::vector<std::string> capsOf(platform::NSEventModifierFlags modifiers);
std::vector<std::string> capsOf(hotkey::KeyCombo const& combo);
// The same in one: "⌃⌥N".
std::string textOf(hotkey::KeyCombo const& combo);
// For who does not know the signs, with the names on the keys of this desktop's keyboards: "Ctrl+Alt+N".
std::string spelledOut(hotkey::KeyCombo const& combo);

// "A on your keyboard" when the user's layout writes something else on the key; else empty.
std::string layoutNote(hotkey::KeyCombo const& combo, std::optional<std::string> const& keyLabel);

// Good: it does what it should. Partial: it does, or would, with a limit. Bad: it does not. Quiet: there is nothing to
// say of it.
enum class Tone { Good, Partial, Bad, Quiet };
struct ShortcutStatus {
    Tone tone = Tone::Quiet;
    std::string text;
};
ShortcutStatus statusOf(platform::HotKeyTruth const& truth);

} // namespace ideas
