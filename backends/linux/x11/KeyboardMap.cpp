#include "backends/linux/x11/KeyboardMap.h"

#include "backends/linux/x11/KeyPositions.h"

#include <algorithm>

namespace backends {

using platform::HotKeyModifierKeys;
using platform::ModifierKey;
using platform::NSEventModifierFlags;

namespace {

// Symbols of modifier keys, from the X protocol's key symbol encoding.
constexpr xcb_keysym_t numLock = 0xFF7F, scrollLock = 0xFF14, capsLock = 0xFFE5, shiftLock = 0xFFE6;
constexpr xcb_keysym_t kanaLock = 0xFF2D, levelThreeLock = 0xFE05, levelFiveLock = 0xFE13, groupLock = 0xFE07;
constexpr xcb_keysym_t leftMeta = 0xFFE7, rightMeta = 0xFFE8, leftAlt = 0xFFE9, rightAlt = 0xFFEA;
constexpr xcb_keysym_t leftSuper = 0xFFEB, rightSuper = 0xFFEC, leftHyper = 0xFFED, rightHyper = 0xFFEE;

// Where the state of an event has the number of the layout (X Keyboard Extension, section 2.2.2).
constexpr int firstLayoutBit = 13;
constexpr int modifierCount = 8;
// Shift, Lock and Control have places of their own; the others are given by what is on their keys.
constexpr int firstFreeModifier = 3;

std::optional<std::uint8_t> lowest(std::uint8_t bits)
{
    if (bits == 0)
        return std::nullopt;
    return static_cast<std::uint8_t>(bits & -bits);
}

} // namespace

std::optional<xcb_keycode_t> KeyboardMap::keycode(std::uint32_t virtualKeyCode) const
{
    for (auto const& position : keyPositions()) {
        if (position.virtualKeyCode != virtualKeyCode)
            continue;
        auto const found = keycodes.find(position.name);
        if (found != keycodes.end())
            return found->second;
    }
    return std::nullopt;
}

std::optional<std::uint16_t> KeyboardMap::virtualKeyCode(xcb_keycode_t keycode) const
{
    for (auto const& position : keyPositions()) {
        auto const found = keycodes.find(position.name);
        if (found != keycodes.end() && found->second == keycode)
            return position.virtualKeyCode;
    }
    return std::nullopt;
}

std::vector<xcb_keysym_t> KeyboardMap::symbolsOf(xcb_keycode_t keycode) const
{
    auto const begin = static_cast<std::ptrdiff_t>(keycode - firstKeycode) * symbolsPerKey;
    if (keycode < firstKeycode || begin + symbolsPerKey > static_cast<std::ptrdiff_t>(symbols.size()))
        return {};
    return { symbols.begin() + begin, symbols.begin() + begin + symbolsPerKey };
}

std::optional<xcb_keysym_t> KeyboardMap::symbol(std::uint32_t virtualKeyCode) const
{
    auto const key = keycode(virtualKeyCode);
    auto const written = key ? symbolsOf(*key) : std::vector<xcb_keysym_t> {};
    if (written.empty() || written[0] == XCB_NO_SYMBOL)
        return std::nullopt;
    return written[0];
}

std::vector<std::uint16_t> KeyboardMap::virtualKeyCodes(xcb_keysym_t symbol) const
{
    std::vector<std::uint16_t> codes;
    for (int place = 0; place < symbolsPerKey; ++place) {
        for (auto const& position : keyPositions()) {
            auto const found = keycodes.find(position.name);
            auto const written = found == keycodes.end() ? std::vector<xcb_keysym_t> {} : symbolsOf(found->second);
            bool const isKnown = std::find(codes.begin(), codes.end(), position.virtualKeyCode) != codes.end();
            if (!written.empty() && written[static_cast<std::size_t>(place)] == symbol && !isKnown)
                codes.push_back(position.virtualKeyCode);
        }
    }
    return codes;
}

std::vector<xcb_keysym_t> KeyboardMap::typedSymbols(xcb_keycode_t keycode, std::uint16_t state) const
{
    auto const written = symbolsOf(keycode);
    std::vector<xcb_keysym_t> typed;
    auto const add = [&](std::size_t place) {
        if (place < written.size() && written[place] != XCB_NO_SYMBOL
            && std::find(typed.begin(), typed.end(), written[place]) == typed.end())
            typed.push_back(written[place]);
    };
    // The core protocol tells of two layouts with two symbols each; the extension's further ones count as the first.
    std::size_t const layout = (state >> firstLayoutBit & 3) == 1 ? 2 : 0;
    std::size_t const shift = (state & XCB_MOD_MASK_SHIFT) != 0 ? 1 : 0;
    for (auto const place : { layout + shift, layout, shift, std::size_t { 0 } })
        add(place);
    return typed;
}

std::uint8_t KeyboardMap::bitsWithSymbols(std::initializer_list<xcb_keysym_t> wanted) const
{
    std::uint8_t bits = 0;
    for (std::size_t i = 0; i < modifierKeys.size(); ++i) {
        auto const modifier = static_cast<int>(i) / keysPerModifier;
        auto const written = symbolsOf(modifierKeys[i]);
        if (modifier >= firstFreeModifier && modifier < modifierCount
            && std::find_first_of(written.begin(), written.end(), wanted.begin(), wanted.end()) != written.end())
            bits = static_cast<std::uint8_t>(bits | 1u << modifier);
    }
    return bits;
}

std::optional<std::uint8_t> KeyboardMap::modifierBit(ModifierKey key) const
{
    switch (key) {
    case ModifierKey::Shift:
        return XCB_MOD_MASK_SHIFT;
    case ModifierKey::Control:
        return XCB_MOD_MASK_CONTROL;
    case ModifierKey::Alt: {
        // Old keyboards have Meta in its place.
        auto const bit = lowest(bitsWithSymbols({ leftAlt, rightAlt }));
        return bit ? bit : lowest(bitsWithSymbols({ leftMeta, rightMeta }));
    }
    case ModifierKey::Super:
        return lowest(bitsWithSymbols({ leftSuper, rightSuper }));
    case ModifierKey::Hyper:
        return lowest(bitsWithSymbols({ leftHyper, rightHyper }));
    case ModifierKey::Meta:
        return lowest(bitsWithSymbols({ leftMeta, rightMeta }));
    }
    return std::nullopt;
}

std::uint8_t KeyboardMap::lockBits() const
{
    return XCB_MOD_MASK_LOCK
        | bitsWithSymbols(
            { numLock, scrollLock, capsLock, shiftLock, kanaLock, levelThreeLock, levelFiveLock, groupLock });
}

NSEventModifierFlags KeyboardMap::modifierFlags(std::uint16_t state, HotKeyModifierKeys const& keys) const
{
    NSEventModifierFlags flags;
    if (state & XCB_MOD_MASK_LOCK)
        flags |= NSEventModifierFlags::capsLock;
    auto const add = [&](ModifierKey key, NSEventModifierFlags flag) {
        if (auto const bit = modifierBit(key); bit && (state & *bit))
            flags |= flag;
    };
    add(keys.shift, NSEventModifierFlags::shift);
    add(keys.control, NSEventModifierFlags::control);
    add(keys.option, NSEventModifierFlags::option);
    add(keys.command, NSEventModifierFlags::command);
    return flags;
}

} // namespace backends
