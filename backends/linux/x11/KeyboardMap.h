#pragma once

#include "platform/appkit/NSEventModifierFlags.h"
#include "platform/carbon/HotKeyTruth.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// One keyboard as the X server describes it: which key lies where, what is written on it and which modifiers it gives.
// A value.
struct KeyboardMap {
    // By the names that X gives to positions ("ESC", "AC01"). They do not change with the layout, as virtual key codes
    // do not.
    std::map<std::string, xcb_keycode_t> keycodes {};

    // What is written on the keys, from the first keycode on, so many symbols each: two of the first layout, then two
    // of the second.
    xcb_keycode_t firstKeycode = 0;
    int symbolsPerKey = 0;
    std::vector<xcb_keysym_t> symbols {};

    // The keys of the eight modifiers (Shift, Lock, Control, Mod1 to Mod5), so many each; 0 is no key.
    int keysPerModifier = 0;
    std::vector<xcb_keycode_t> modifierKeys {};

    // Absent for a key that this keyboard has not.
    std::optional<xcb_keycode_t> keycode(std::uint32_t virtualKeyCode) const;
    std::optional<std::uint16_t> virtualKeyCode(xcb_keycode_t keycode) const;

    // The symbol on the key without modifiers, in the first layout. Absent when there is none.
    std::optional<xcb_keysym_t> symbol(std::uint32_t virtualKeyCode) const;
    // Where a symbol can be typed without modifiers, or with Shift alone; the first layout first.
    std::vector<std::uint16_t> virtualKeyCodes(xcb_keysym_t symbol) const;

    // What the key types with the Shift and in the layout that the state of its event names. After it what the same key
    // types otherwise: without Shift, and in the first layout. Each symbol once.
    std::vector<xcb_keysym_t> typedSymbols(xcb_keycode_t keycode, std::uint16_t state) const;

    // The bit that a modifier key sets in the state of an event. Absent when no key of this keyboard gives it. Which of
    // Mod1 to Mod5 it is differs from keyboard to keyboard, and users move them.
    std::optional<std::uint8_t> modifierBit(platform::ModifierKey key) const;
    // All bits of locks, which have nothing to do with what a user wants: Caps, Num, Scroll and the like.
    std::uint8_t lockBits() const;
    platform::NSEventModifierFlags modifierFlags(std::uint16_t state, platform::HotKeyModifierKeys const& keys) const;

    bool operator==(KeyboardMap const&) const = default;

private:
    std::vector<xcb_keysym_t> symbolsOf(xcb_keycode_t keycode) const;
    std::uint8_t bitsWithSymbols(std::initializer_list<xcb_keysym_t> wanted) const;
};

} // namespace backends
