#pragma once

#include "hotkey/Key.h"
#include "platform/appkit/NSEventModifierFlags.h"
#include "platform/foundation/Dictionary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class NSMenu;
class Platform;
} // namespace platform

namespace hotkey {

// A key with the modifiers held together with it: what a shortcut is. A value of two numbers, in the hot-key
// service's own words; neither is checked. Any thread, but for the lists that read menus.
struct KeyCombo {
    std::uint32_t carbonKeyCode = 0;
    std::uint32_t carbonModifiers = 0;

    KeyCombo(std::uint32_t keyCode, std::uint32_t modifierBits);
    KeyCombo(Key key, platform::NSEventModifierFlags modifiers);

    // Absent for a code that no key has.
    std::optional<Key> key() const;
    // An absent key stores the code 0, which reads back as "a".
    void setKey(std::optional<Key> key);

    // Only the four modifiers that a hot key can have.
    platform::NSEventModifierFlags modifiers() const;
    void setModifiers(platform::NSEventModifierFlags modifiers);

    // Always true. Who needs a known key asks key() for it.
    bool isValid() const { return true; }

    // The form to keep in settings: "keyCode" and "modifiers", both signed integers.
    platform::Dictionary dictionary() const;
    // Absent when either is missing or no integer. Fatal when an integer is there that does not fit 32 bits without
    // sign: whoever stored that is broken.
    static std::optional<KeyCombo> fromDictionary(platform::Dictionary const& dictionary);

    // As menus show it: "⇧⌘N". The modifiers alone when no key has the code.
    std::string description() const;

    // Never a text: the code alone does not say what the user's layout writes on the key.
    static std::optional<std::string> carbonKeyCodeToString(std::uint32_t carbonKeyCode);

    // What a user had better not pick, because it is taken already. Each list keeps its source's order and may hold a
    // combination twice.

    // What the system keeps for itself and has switched on. It may take some milliseconds: ask once a dialog.
    static std::vector<KeyCombo> systemKeyCombos(platform::Platform& platform);
    // The app's main menu with its submenus; empty while the app has told of none. Main thread only.
    static std::vector<KeyCombo> mainMenuKeyCombos(platform::Platform& platform);
    // A menu's items, each before its submenu. Main thread only.
    static std::vector<KeyCombo> keyCombos(platform::NSMenu const& menu);
    // The usual commands for editing and windows, always the same 46.
    static std::vector<KeyCombo> standardKeyCombos();

    bool operator==(KeyCombo const&) const = default;
};

} // namespace hotkey
