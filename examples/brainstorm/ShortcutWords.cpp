#include "examples/brainstorm/ShortcutWords.h"

#include <array>
#include <string_view>
#include <utility>

namespace ideas {

using hotkey::Key;
using hotkey::KeyCombo;
using platform::HotKeyAvailability;
using platform::HotKeyResult;
using platform::NSEventModifierFlags;

namespace {

struct Modifier {
    NSEventModifierFlags flag;
    char const* sign;
    char const* name;
};

// In the order of menus.
constexpr std::array<Modifier, 4> modifiers { {
    { NSEventModifierFlags::control, "⌃", "Ctrl" },
    { NSEventModifierFlags::option, "⌥", "Alt" },
    { NSEventModifierFlags::shift, "⇧", "Shift" },
    { NSEventModifierFlags::command, "⌘", "Super" },
} };

// Function keys have a sign of a private font in front of their name, which fonts here do not know.
std::string withoutPrivateSign(std::string_view text)
{
    for (std::string_view const sign : { "\uF860", "\uF861" }) {
        if (text.starts_with(sign))
            return std::string(text.substr(sign.size()));
    }
    return std::string(text);
}

std::string keyText(KeyCombo const& combo)
{
    auto const key = combo.key();
    if (key == Key::quote)
        return "'";
    return key ? withoutPrivateSign(key->description()) : "?";
}

std::string keyName(KeyCombo const& combo)
{
    static std::pair<Key, char const*> const names[]
        = { { Key::space, "Space" }, { Key::tab, "Tab" }, { Key::return_, "Return" }, { Key::escape, "Escape" },
              { Key::delete_, "Backspace" }, { Key::forwardDelete, "Delete" }, { Key::home, "Home" },
              { Key::end, "End" }, { Key::pageUp, "Page Up" }, { Key::pageDown, "Page Down" }, { Key::upArrow, "Up" },
              { Key::downArrow, "Down" }, { Key::leftArrow, "Left" }, { Key::rightArrow, "Right" } };
    for (auto const& [key, name] : names) {
        if (combo.key() == key)
            return name;
    }
    return keyText(combo);
}

ShortcutStatus statusOfActive(platform::HotKeyTruth const& truth)
{
    switch (truth.availability) {
    case HotKeyAvailability::X11Global:
        return { Tone::Good, "Works everywhere" };
    case HotKeyAvailability::XWaylandFocusedOnly:
        return { Tone::Partial, "Works only while an X window has the keyboard (Wayland session)" };
    case HotKeyAvailability::PortalBound:
        return { Tone::Good, "Bound by your desktop" + (truth.trigger.empty() ? "" : ": " + truth.trigger) };
    case HotKeyAvailability::PortalDeclined:
        return { Tone::Partial, "You declined it when your desktop asked; its settings can allow it" };
    case HotKeyAvailability::Unavailable:
        break;
    }
    return { Tone::Bad, "This session has no system-wide shortcuts" };
}

} // namespace

std::vector<std::string> capsOf(NSEventModifierFlags flags)
{
    std::vector<std::string> caps;
    for (auto const& modifier : modifiers) {
        if (flags.contains(modifier.flag))
            caps.emplace_back(modifier.sign);
    }
    return caps;
}

std::vector<std::string> capsOf(KeyCombo const& combo)
{
    auto caps = capsOf(combo.modifiers());
    caps.push_back(keyText(combo));
    return caps;
}

std::string textOf(KeyCombo const& combo)
{
    std::string text;
    for (auto const& cap : capsOf(combo))
        text += cap;
    return text;
}

std::string spelledOut(KeyCombo const& combo)
{
    std::string text;
    for (auto const& modifier : modifiers) {
        if (combo.modifiers().contains(modifier.flag))
            text += std::string(modifier.name) + "+";
    }
    return text + keyName(combo);
}

std::string layoutNote(KeyCombo const& combo, std::optional<std::string> const& keyLabel)
{
    if (!keyLabel || *keyLabel == keyText(combo))
        return {};
    return *keyLabel + " on your keyboard";
}

ShortcutStatus statusOf(platform::HotKeyTruth const& truth)
{
    switch (truth.lastRegistration) {
    case HotKeyResult::Active:
        return statusOfActive(truth);
    case HotKeyResult::None:
        return { Tone::Quiet, "Not in use" };
    case HotKeyResult::Pending:
        return { Tone::Quiet, "Asking your desktop…" };
    case HotKeyResult::HeldByAnotherClient:
        return { Tone::Bad,
            "Another program already uses this shortcut" + (truth.holder.empty() ? "" : ": " + truth.holder) };
    case HotKeyResult::HeldByThisProcess:
        return { Tone::Bad, "Ideas already uses this shortcut for something else" };
    case HotKeyResult::KeyNotOnKeyboard:
        return { Tone::Bad, "Not on this keyboard: it does not have the key" };
    case HotKeyResult::ModifierNotOnKeyboard:
        return { Tone::Bad, "Not on this keyboard: no key gives one of the modifiers" };
    case HotKeyResult::NotBound:
        return { Tone::Bad, "Your desktop did not bind it" };
    case HotKeyResult::Declined:
        return { Tone::Partial, "You declined it when your desktop asked; its settings can allow it" };
    case HotKeyResult::Unavailable:
        break;
    }
    return { Tone::Bad, "This session has no system-wide shortcuts" };
}

} // namespace ideas
