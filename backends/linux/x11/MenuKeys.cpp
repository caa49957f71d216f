#include "backends/linux/x11/MenuKeys.h"

#include "backends/linux/host/KeySymbols.h"
#include "backends/linux/x11/KeyLabel.h"
#include "backends/shared/MenuShortcut.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace backends {

using platform::ModifierKey;
using platform::NSMenuItem;

namespace {

// Key symbols, from the X protocol's encoding: those of the keypad stand behind the others.
constexpr std::array<std::pair<xcb_keysym_t, MenuKey>, 13> menuKeys { {
    { 0xFF52, MenuKey::Up },
    { 0xFF97, MenuKey::Up },
    { 0xFF54, MenuKey::Down },
    { 0xFF99, MenuKey::Down },
    { 0xFF50, MenuKey::First },
    { 0xFF95, MenuKey::First },
    { 0xFF57, MenuKey::Last },
    { 0xFF9C, MenuKey::Last },
    { 0xFF0D, MenuKey::Choose },
    { 0xFF8D, MenuKey::Choose },
    { 0x0020, MenuKey::Choose },
    { 0xFF80, MenuKey::Choose },
    { 0xFF1B, MenuKey::Cancel },
} };

// Characters of items that are no visible text.
struct NamedKey {
    char32_t character;
    xcb_keysym_t symbol;
    std::string_view name;
};
constexpr std::array<NamedKey, 5> namedKeys { {
    { U'\b', 0xFF08, "Backspace" },
    { U'\t', 0xFF09, "Tab" },
    { U'\r', 0xFF0D, "Return" },
    { 0x1B, 0xFF1B, "Esc" },
    { U' ', 0x0020, "Space" },
} };

std::string_view nameOf(ModifierKey key)
{
    switch (key) {
    case ModifierKey::Shift:
        return "Shift";
    case ModifierKey::Control:
        return "Ctrl";
    case ModifierKey::Alt:
        return "Alt";
    case ModifierKey::Super:
        return "Super";
    case ModifierKey::Hyper:
        return "Hyper";
    case ModifierKey::Meta:
        return "Meta";
    }
    return {};
}

// What the item asks for: a symbol, how it is written, and modifiers.
struct Wanted {
    xcb_keysym_t symbol = XCB_NO_SYMBOL;
    std::string name;
    std::vector<ModifierKey> modifiers;
};

std::optional<Wanted> wantedOf(NSMenuItem const& item)
{
    auto shortcut = menuShortcutOf(item);
    auto const character = platform::decodeUTF8(shortcut.character, 0);
    if (!character)
        return std::nullopt;
    Wanted wanted;
    wanted.modifiers = std::move(shortcut.modifiers);
    auto const named = std::find_if(
        namedKeys.begin(), namedKeys.end(), [&](auto const& key) { return key.character == character->scalar; });
    if (named != namedKeys.end()) {
        wanted.symbol = named->symbol;
        wanted.name = named->name;
    } else {
        wanted.symbol = keysymOfCharacter(character->scalar).value_or(xcb_keysym_t { XCB_NO_SYMBOL });
        wanted.name = keyLabel(wanted.symbol).value_or("");
    }
    if (wanted.name.empty())
        return std::nullopt;
    return wanted;
}

// Letters are the same in both cases, as a key is the same with and without Shift.
bool areSameKey(xcb_keysym_t first, xcb_keysym_t second)
{
    if (first == second)
        return true;
    auto const label = keyLabel(first);
    return label && label == keyLabel(second);
}

bool types(MenuKeyPress const& press, std::uint16_t state, xcb_keysym_t symbol)
{
    auto const typed = press.map.typedSymbols(press.keycode, state);
    return std::any_of(typed.begin(), typed.end(), [&](auto candidate) { return areSameKey(candidate, symbol); });
}

std::uint16_t withoutShift(std::uint16_t state)
{
    return static_cast<std::uint16_t>(state & ~std::uint16_t { XCB_MOD_MASK_SHIFT });
}

} // namespace

std::uint8_t MenuKeyPress::modifiers() const { return static_cast<std::uint8_t>(state & 0xFF & ~map.lockBits()); }

std::optional<MenuKey> menuKey(MenuKeyPress const& press)
{
    for (auto const symbol : press.map.typedSymbols(press.keycode, press.state)) {
        auto const found
            = std::find_if(menuKeys.begin(), menuKeys.end(), [&](auto const& key) { return key.first == symbol; });
        if (found != menuKeys.end())
            return found->second;
    }
    return std::nullopt;
}

std::string shortcutText(NSMenuItem const& item)
{
    auto const wanted = wantedOf(item);
    if (!wanted)
        return {};
    std::string text;
    for (auto const key : wanted->modifiers)
        text.append(nameOf(key)).append("+");
    return text + wanted->name;
}

bool isShortcut(NSMenuItem const& item, MenuKeyPress const& press)
{
    auto const wanted = wantedOf(item);
    if (!wanted)
        return false;
    std::uint8_t bits = 0;
    for (auto const key : wanted->modifiers) {
        auto const bit = press.map.modifierBit(key);
        if (!bit)
            return false;
        bits = static_cast<std::uint8_t>(bits | *bit);
    }
    if (press.modifiers() == bits)
        return types(press, press.state, wanted->symbol);
    // The layout may want Shift for the character itself, and then it does not count as one of the item's modifiers.
    return press.modifiers() == (bits | XCB_MOD_MASK_SHIFT) && types(press, press.state, wanted->symbol)
        && !types(press, withoutShift(press.state), wanted->symbol);
}

bool isInitial(std::string const& title, MenuKeyPress const& press)
{
    auto const character = platform::decodeUTF8(title, 0);
    auto const symbol = character ? keysymOfCharacter(character->scalar) : std::nullopt;
    if (!symbol || (press.modifiers() & ~XCB_MOD_MASK_SHIFT) != 0)
        return false;
    return types(press, press.state, *symbol);
}

} // namespace backends
