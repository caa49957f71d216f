#include "backends/linux/host/Accelerator.h"

#include "backends/linux/host/KeySymbols.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <iterator>

namespace backends {

using platform::ModifierKey;

namespace {

struct NamedModifier {
    std::string_view name; // lower case
    ModifierKey key;
};

constexpr NamedModifier gtkModifiers[] = {
    { "primary", ModifierKey::Control },
    { "control", ModifierKey::Control },
    { "ctrl", ModifierKey::Control },
    { "ctl", ModifierKey::Control },
    { "shift", ModifierKey::Shift },
    { "shft", ModifierKey::Shift },
    { "alt", ModifierKey::Alt },
    { "mod1", ModifierKey::Alt },
    { "super", ModifierKey::Super },
    { "mod4", ModifierKey::Super },
    { "hyper", ModifierKey::Hyper },
    { "meta", ModifierKey::Meta },
};

constexpr NamedModifier qtModifiers[] = {
    { "ctrl", ModifierKey::Control },
    { "shift", ModifierKey::Shift },
    { "alt", ModifierKey::Alt },
    { "meta", ModifierKey::Super },
};

// Where Qt has another name for a key than X has.
struct QtKey {
    std::string_view name; // lower case
    std::string_view symbol;
};

constexpr QtKey qtKeys[] = {
    { "esc", "Escape" },
    { "backtab", "ISO_Left_Tab" },
    { "enter", "KP_Enter" },
    { "ins", "Insert" },
    { "del", "Delete" },
    { "pgup", "Page_Up" },
    { "pgdown", "Page_Down" },
    { "sysreq", "Sys_Req" },
    { "capslock", "Caps_Lock" },
    { "numlock", "Num_Lock" },
    { "scrolllock", "Scroll_Lock" },
    { "volume up", "XF86AudioRaiseVolume" },
    { "volume down", "XF86AudioLowerVolume" },
    { "volume mute", "XF86AudioMute" },
};

// Names that Qt shares with X.
constexpr std::string_view sharedKeys[] = { "tab", "backspace", "return", "pause", "print", "clear", "home", "end",
    "left", "up", "right", "down", "menu", "help", "space" };

struct KeypadKey {
    std::string_view qt; // lower case
    std::string_view symbol;
};

constexpr KeypadKey keypadKeys[] = {
    { "+", "KP_Add" },
    { "-", "KP_Subtract" },
    { "*", "KP_Multiply" },
    { "/", "KP_Divide" },
    { ".", "KP_Decimal" },
    { ",", "KP_Separator" },
    { "=", "KP_Equal" },
};

std::optional<ModifierKey> modifierNamed(auto const& modifiers, std::string_view name)
{
    auto const lower = platform::asciiLowerCase(name);
    auto const found = std::find_if(
        std::begin(modifiers), std::end(modifiers), [&](auto const& each) { return each.name == lower; });
    if (found == std::end(modifiers))
        return std::nullopt;
    return found->key;
}

Accelerator accelerator(std::set<ModifierKey> modifiers, std::uint32_t keysym)
{
    // The Tab key writes another symbol while Shift is down.
    if (keysym == keysymNamed("ISO_Left_Tab")) {
        modifiers.insert(ModifierKey::Shift);
        keysym = *keysymNamed("Tab");
    }
    return { std::move(modifiers), lowerCaseKeysym(keysym) };
}

std::optional<std::uint32_t> singleCharacter(std::string_view text)
{
    auto const character = platform::decodeUTF8(text, 0);
    if (!character || character->length != text.size())
        return std::nullopt;
    return keysymOfCharacter(character->scalar);
}

bool isFunctionKey(std::string_view lowerCaseName)
{
    return lowerCaseName.size() > 1 && lowerCaseName[0] == 'f'
        && std::all_of(lowerCaseName.begin() + 1, lowerCaseName.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<std::uint32_t> qtKeypadKey(std::string_view lowerCaseName)
{
    for (auto const& key : keypadKeys) {
        if (key.qt == lowerCaseName)
            return keysymNamed(key.symbol);
    }
    bool const isDigit = lowerCaseName.size() == 1 && lowerCaseName[0] >= '0' && lowerCaseName[0] <= '9';
    return isDigit ? keysymNamed("KP_" + std::string(lowerCaseName)) : std::nullopt;
}

std::optional<std::uint32_t> qtKey(std::string_view name)
{
    if (auto const character = singleCharacter(name))
        return character;
    auto const lower = platform::asciiLowerCase(name);
    for (auto const& key : qtKeys) {
        if (key.name == lower)
            return keysymNamed(key.symbol);
    }
    bool const isShared = std::find(std::begin(sharedKeys), std::end(sharedKeys), lower) != std::end(sharedKeys)
        || isFunctionKey(lower);
    return isShared ? keysymNamed(lower) : std::nullopt;
}

} // namespace

std::optional<Accelerator> acceleratorFromGtk(std::string_view text)
{
    std::set<ModifierKey> modifiers;
    while (text.starts_with('<')) {
        auto const end = text.find('>');
        if (end == std::string_view::npos)
            return std::nullopt;
        // An unknown one may need a key that is no modifier of a Mac, or be no modifier at all ("<Release>").
        auto const modifier = modifierNamed(gtkModifiers, text.substr(1, end - 1));
        if (!modifier)
            return std::nullopt;
        modifiers.insert(*modifier);
        text.remove_prefix(end + 1);
    }
    auto const keysym = keysymNamed(text);
    if (!keysym)
        return std::nullopt;
    return accelerator(std::move(modifiers), *keysym);
}

std::optional<Accelerator> acceleratorFromQt(std::string_view text)
{
    std::set<ModifierKey> modifiers;
    bool isOnKeypad = false;
    // A plus that is the key itself stands last: "Meta++", "+".
    for (auto plus = text.find('+'); plus != std::string_view::npos && plus + 1 < text.size(); plus = text.find('+')) {
        auto const name = text.substr(0, plus);
        auto const modifier = modifierNamed(qtModifiers, name);
        bool const isKeypad = platform::asciiLowerCase(name) == "num";
        if (!modifier && !isKeypad)
            return std::nullopt;
        isOnKeypad = isOnKeypad || isKeypad;
        if (modifier)
            modifiers.insert(*modifier);
        text.remove_prefix(plus + 1);
    }
    auto const onKeypad = isOnKeypad ? qtKeypadKey(text) : std::nullopt;
    auto const keysym = onKeypad ? onKeypad : qtKey(text);
    if (!keysym)
        return std::nullopt;
    return accelerator(std::move(modifiers), *keysym);
}

} // namespace backends
