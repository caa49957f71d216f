#pragma once

#include "tests/linux/Client.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// The evdev keycode of each virtual key code on the usual keyboard: the number that the kernel gives the key, and 8.
// Absent for the one key that no such keyboard tells of.
std::optional<xcb_keycode_t> evdevKeycode(std::uint32_t virtualKeyCode);
// All virtual key codes that a keyboard of 114 keys has.
std::vector<std::uint32_t> virtualKeyCodesOfKeyboard();

constexpr xcb_keycode_t leftShiftKey = 50, leftControlKey = 37, leftAltKey = 64, leftSuperKey = 133;
constexpr xcb_keycode_t capsLockKey = 66, numLockKey = 77, scrollLockKey = 78;

// The user of a keyboard: changes its layout and its modifiers, and tries what others have grabbed.
class KeyboardOwner : public Client {
public:
    using Client::Client;

    // The arguments of setxkbmap; returns when the server has the new keyboard.
    void setLayout(std::vector<std::string> arguments);
    void lockGroup(int group);
    // Which modifier (0 to 7) has which keys from now on; the others keep theirs.
    void setModifierKeys(int modifier, std::vector<xcb_keycode_t> const& keys);
    // In milliseconds: until the first repetition, and between the others.
    void setRepeat(int delay, int interval);
    // The modifiers that are on now, locks included.
    std::uint16_t modifierState();

    // Whether somebody else could grab it on the root.
    bool isFree(xcb_keycode_t key, std::uint16_t modifiers) { return isKeyFree(root(), key, modifiers); }
    // The same, when its holder has let it go on another connection: the server may come to that a little later.
    bool becomesFree(xcb_keycode_t key, std::uint16_t modifiers);
    bool canGrabKeyboard();
    // Keeps it from then on. False when it was held.
    bool grab(xcb_keycode_t key, std::uint16_t modifiers) { return grabKey(root(), key, modifiers); }
    void ungrab(xcb_keycode_t key, std::uint16_t modifiers) { ungrabKey(root(), key, modifiers); }

    xcb_window_t focus();
};

} // namespace paneweld_tests
