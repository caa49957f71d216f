#include "backends/linux/host/AnsiLayout.h"

#include "backends/linux/host/KeySymbols.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

namespace backends {

namespace {

struct NamedKey {
    std::string_view symbol;
    std::uint16_t virtualKeyCode;
};

// clang-format off
constexpr NamedKey keys[] = {
    { "a", 0 }, { "s", 1 }, { "d", 2 }, { "f", 3 }, { "h", 4 }, { "g", 5 }, { "z", 6 }, { "x", 7 }, { "c", 8 },
    { "v", 9 }, { "section", 10 }, { "b", 11 }, { "q", 12 }, { "w", 13 }, { "e", 14 }, { "r", 15 }, { "y", 16 },
    { "t", 17 }, { "o", 31 }, { "u", 32 }, { "i", 34 }, { "p", 35 }, { "l", 37 }, { "j", 38 }, { "k", 40 },
    { "n", 45 }, { "m", 46 },

    { "1", 18 }, { "exclam", 18 }, { "2", 19 }, { "at", 19 }, { "3", 20 }, { "numbersign", 20 }, { "4", 21 },
    { "dollar", 21 }, { "5", 23 }, { "percent", 23 }, { "6", 22 }, { "asciicircum", 22 }, { "7", 26 },
    { "ampersand", 26 }, { "8", 28 }, { "asterisk", 28 }, { "9", 25 }, { "parenleft", 25 }, { "0", 29 },
    { "parenright", 29 }, { "equal", 24 }, { "plus", 24 }, { "minus", 27 }, { "underscore", 27 },
    { "bracketright", 30 }, { "braceright", 30 }, { "bracketleft", 33 }, { "braceleft", 33 }, { "apostrophe", 39 },
    { "quotedbl", 39 }, { "semicolon", 41 }, { "colon", 41 }, { "backslash", 42 }, { "bar", 42 }, { "comma", 43 },
    { "less", 43 }, { "slash", 44 }, { "question", 44 }, { "period", 47 }, { "greater", 47 }, { "grave", 50 },
    { "asciitilde", 50 }, { "Above_Tab", 50 },

    { "Return", 36 }, { "Tab", 48 }, { "space", 49 }, { "BackSpace", 51 }, { "Escape", 53 }, { "Help", 114 },
    { "Home", 115 }, { "Page_Up", 116 }, { "Delete", 117 }, { "End", 119 }, { "Page_Down", 121 }, { "Left", 123 },
    { "Right", 124 }, { "Down", 125 }, { "Up", 126 }, { "XF86AudioRaiseVolume", 72 },
    { "XF86AudioLowerVolume", 73 }, { "XF86AudioMute", 74 },

    { "KP_Decimal", 65 }, { "KP_Multiply", 67 }, { "KP_Add", 69 }, { "KP_Divide", 75 }, { "KP_Enter", 76 },
    { "KP_Subtract", 78 }, { "KP_Equal", 81 }, { "KP_0", 82 }, { "KP_1", 83 }, { "KP_2", 84 }, { "KP_3", 85 },
    { "KP_4", 86 }, { "KP_5", 87 }, { "KP_6", 88 }, { "KP_7", 89 }, { "KP_8", 91 }, { "KP_9", 92 },
    // What the same keys do while the lock of the keypad is off.
    { "KP_Delete", 65 }, { "KP_Insert", 82 }, { "KP_End", 83 }, { "KP_Down", 84 }, { "KP_Page_Down", 85 },
    { "KP_Left", 86 }, { "KP_Begin", 87 }, { "KP_Right", 88 }, { "KP_Home", 89 }, { "KP_Up", 91 },
    { "KP_Page_Up", 92 },

    { "F1", 122 }, { "F2", 120 }, { "F3", 99 }, { "F4", 118 }, { "F5", 96 }, { "F6", 97 }, { "F7", 98 },
    { "F8", 100 }, { "F9", 101 }, { "F10", 109 }, { "F11", 103 }, { "F12", 111 }, { "F13", 105 }, { "F14", 107 },
    { "F15", 113 }, { "F16", 106 }, { "F17", 64 }, { "F18", 79 }, { "F19", 80 }, { "F20", 90 },
};
// clang-format on

std::multimap<std::uint32_t, std::uint16_t> codesByKeysym()
{
    std::multimap<std::uint32_t, std::uint16_t> codes;
    for (auto const& key : keys) {
        if (auto const keysym = keysymNamed(key.symbol))
            codes.emplace(*keysym, key.virtualKeyCode);
    }
    return codes;
}

} // namespace

std::vector<std::uint16_t> ansiKeyCodes(std::uint32_t keysym)
{
    static auto const codes = codesByKeysym();
    std::vector<std::uint16_t> found;
    for (auto [code, end] = codes.equal_range(keysym); code != end; ++code)
        found.push_back(code->second);
    return found;
}

std::optional<std::uint32_t> ansiKeysym(std::uint32_t virtualKeyCode)
{
    // The plain symbol of a key stands before those above it.
    auto const* const found = std::find_if(
        std::begin(keys), std::end(keys), [&](auto const& key) { return key.virtualKeyCode == virtualKeyCode; });
    return found == std::end(keys) ? std::nullopt : keysymNamed(found->symbol);
}

} // namespace backends
