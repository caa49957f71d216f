#include "backends/linux/host/KeySymbols.h"

#include "platform/foundation/Text.h"

#include <array>
#include <cstdio>

namespace backends {

namespace {

struct KeySymbol {
    std::string_view name;
    std::uint32_t keysym;
};

// Where a symbol has two names, the first is the one that is written.
// clang-format off
constexpr KeySymbol symbols[] = {
    { "space", 0x20 }, { "exclam", 0x21 }, { "quotedbl", 0x22 }, { "numbersign", 0x23 }, { "dollar", 0x24 },
    { "percent", 0x25 }, { "ampersand", 0x26 }, { "apostrophe", 0x27 }, { "parenleft", 0x28 }, { "parenright", 0x29 },
    { "asterisk", 0x2a }, { "plus", 0x2b }, { "comma", 0x2c }, { "minus", 0x2d }, { "period", 0x2e },
    { "slash", 0x2f }, { "quoteright", 0x27 }, { "colon", 0x3a }, { "semicolon", 0x3b }, { "less", 0x3c },
    { "equal", 0x3d }, { "greater", 0x3e }, { "question", 0x3f }, { "at", 0x40 }, { "bracketleft", 0x5b },
    { "backslash", 0x5c }, { "bracketright", 0x5d }, { "asciicircum", 0x5e }, { "underscore", 0x5f },
    { "grave", 0x60 }, { "quoteleft", 0x60 }, { "braceleft", 0x7b }, { "bar", 0x7c }, { "braceright", 0x7d },
    { "asciitilde", 0x7e }, { "nobreakspace", 0xa0 }, { "exclamdown", 0xa1 }, { "cent", 0xa2 }, { "sterling", 0xa3 },
    { "currency", 0xa4 }, { "yen", 0xa5 }, { "brokenbar", 0xa6 }, { "section", 0xa7 }, { "diaeresis", 0xa8 },
    { "copyright", 0xa9 }, { "ordfeminine", 0xaa }, { "guillemotleft", 0xab }, { "notsign", 0xac },
    { "hyphen", 0xad }, { "registered", 0xae }, { "macron", 0xaf }, { "degree", 0xb0 }, { "plusminus", 0xb1 },
    { "twosuperior", 0xb2 }, { "threesuperior", 0xb3 }, { "acute", 0xb4 }, { "mu", 0xb5 }, { "paragraph", 0xb6 },
    { "periodcentered", 0xb7 }, { "cedilla", 0xb8 }, { "onesuperior", 0xb9 }, { "masculine", 0xba },
    { "guillemotright", 0xbb }, { "onequarter", 0xbc }, { "onehalf", 0xbd }, { "threequarters", 0xbe },
    { "questiondown", 0xbf }, { "Agrave", 0xc0 }, { "Aacute", 0xc1 }, { "Acircumflex", 0xc2 }, { "Atilde", 0xc3 },
    { "Adiaeresis", 0xc4 }, { "Aring", 0xc5 }, { "AE", 0xc6 }, { "Ccedilla", 0xc7 }, { "Egrave", 0xc8 },
    { "Eacute", 0xc9 }, { "Ecircumflex", 0xca }, { "Ediaeresis", 0xcb }, { "Igrave", 0xcc }, { "Iacute", 0xcd },
    { "Icircumflex", 0xce }, { "Idiaeresis", 0xcf }, { "ETH", 0xd0 }, { "Ntilde", 0xd1 }, { "Ograve", 0xd2 },
    { "Oacute", 0xd3 }, { "Ocircumflex", 0xd4 }, { "Otilde", 0xd5 }, { "Odiaeresis", 0xd6 }, { "multiply", 0xd7 },
    { "Oslash", 0xd8 }, { "Ugrave", 0xd9 }, { "Uacute", 0xda }, { "Ucircumflex", 0xdb }, { "Udiaeresis", 0xdc },
    { "Yacute", 0xdd }, { "THORN", 0xde }, { "ssharp", 0xdf }, { "agrave", 0xe0 }, { "aacute", 0xe1 },
    { "acircumflex", 0xe2 }, { "atilde", 0xe3 }, { "adiaeresis", 0xe4 }, { "aring", 0xe5 }, { "ae", 0xe6 },
    { "ccedilla", 0xe7 }, { "egrave", 0xe8 }, { "eacute", 0xe9 }, { "ecircumflex", 0xea }, { "ediaeresis", 0xeb },
    { "igrave", 0xec }, { "iacute", 0xed }, { "icircumflex", 0xee }, { "idiaeresis", 0xef }, { "eth", 0xf0 },
    { "ntilde", 0xf1 }, { "ograve", 0xf2 }, { "oacute", 0xf3 }, { "ocircumflex", 0xf4 }, { "otilde", 0xf5 },
    { "odiaeresis", 0xf6 }, { "division", 0xf7 }, { "oslash", 0xf8 }, { "ugrave", 0xf9 }, { "uacute", 0xfa },
    { "ucircumflex", 0xfb }, { "udiaeresis", 0xfc }, { "yacute", 0xfd }, { "thorn", 0xfe }, { "ydiaeresis", 0xff },
    { "BackSpace", 0xff08 }, { "Tab", 0xff09 }, { "ISO_Left_Tab", 0xfe20 }, { "Linefeed", 0xff0a },
    { "Clear", 0xff0b }, { "Return", 0xff0d }, { "Pause", 0xff13 }, { "Scroll_Lock", 0xff14 }, { "Sys_Req", 0xff15 },
    { "Above_Tab", aboveTabKeysym }, { "Escape", 0xff1b }, { "Home", 0xff50 }, { "Left", 0xff51 }, { "Up", 0xff52 }, { "Right", 0xff53 },
    { "Down", 0xff54 }, { "Page_Up", 0xff55 }, { "Prior", 0xff55 }, { "Page_Down", 0xff56 }, { "Next", 0xff56 },
    { "End", 0xff57 }, { "Begin", 0xff58 }, { "Select", 0xff60 }, { "Print", 0xff61 }, { "Execute", 0xff62 },
    { "Insert", 0xff63 }, { "Undo", 0xff65 }, { "Redo", 0xff66 }, { "Menu", 0xff67 }, { "Find", 0xff68 },
    { "Cancel", 0xff69 }, { "Help", 0xff6a }, { "Break", 0xff6b }, { "Num_Lock", 0xff7f }, { "Caps_Lock", 0xffe5 },
    { "Delete", 0xffff }, { "KP_Space", 0xff80 }, { "KP_Tab", 0xff89 }, { "KP_Enter", 0xff8d }, { "KP_Home", 0xff95 },
    { "KP_Left", 0xff96 }, { "KP_Up", 0xff97 }, { "KP_Right", 0xff98 }, { "KP_Down", 0xff99 },
    { "KP_Page_Up", 0xff9a }, { "KP_Prior", 0xff9a }, { "KP_Page_Down", 0xff9b }, { "KP_Next", 0xff9b },
    { "KP_End", 0xff9c }, { "KP_Begin", 0xff9d }, { "KP_Insert", 0xff9e }, { "KP_Delete", 0xff9f },
    { "KP_Equal", 0xffbd }, { "KP_Multiply", 0xffaa }, { "KP_Add", 0xffab }, { "KP_Separator", 0xffac },
    { "KP_Subtract", 0xffad }, { "KP_Decimal", 0xffae }, { "KP_Divide", 0xffaf }, { "EuroSign", 0x20ac },
    { "XF86AudioLowerVolume", 0x1008ff11 }, { "XF86AudioMute", 0x1008ff12 }, { "XF86AudioRaiseVolume", 0x1008ff13 },
};
// clang-format on

// Symbols that lie in a row, and are named by counting.
struct NumberedSymbols {
    std::string_view prefix;
    unsigned first;
    unsigned last;
    std::uint32_t keysym; // of the first
};
constexpr NumberedSymbols numberedSymbols[]
    = { { "F", 1, 35, 0xffbe }, { "KP_F", 1, 4, 0xff91 }, { "KP_", 0, 9, 0xffb0 } };

// Characters beyond Latin-1 have their number with this bit.
constexpr std::uint32_t unicodeBit = 0x01000000;
constexpr std::size_t longestNumber = 8;

constexpr bool isLetterOrDigit(std::uint32_t character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z')
        || (character >= 'a' && character <= 'z');
}

std::optional<std::uint32_t> numbered(NumberedSymbols const& row, std::string_view name)
{
    if (!name.starts_with(row.prefix))
        return std::nullopt;
    for (auto number = row.first; number <= row.last; ++number) {
        if (name.substr(row.prefix.size()) == std::to_string(number))
            return row.keysym + number - row.first;
    }
    return std::nullopt;
}

std::optional<std::uint32_t> characterByNumber(std::string_view name)
{
    if (!name.starts_with('U'))
        return std::nullopt;
    name.remove_prefix(name.starts_with("U+") ? 2 : 1);
    if (name.empty() || name.size() > longestNumber)
        return std::nullopt;
    std::uint32_t number = 0;
    for (char const digit : name) {
        auto const value = platform::hexDigitValue(digit);
        if (!value)
            return std::nullopt;
        number = number * 16 + *value;
    }
    return keysymOfCharacter(number);
}

std::optional<std::uint32_t> keysymInAnyCase(std::string_view name)
{
    auto const wanted = platform::asciiLowerCase(name);
    for (auto const& symbol : symbols) {
        if (platform::asciiLowerCase(symbol.name) == wanted)
            return symbol.keysym;
    }
    auto const upper = platform::asciiUpperCase(name);
    for (auto const& row : numberedSymbols) {
        if (auto const keysym = numbered(row, upper))
            return keysym;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::uint32_t> keysymNamed(std::string_view name)
{
    if (name.size() == 1 && isLetterOrDigit(static_cast<unsigned char>(name[0])))
        return static_cast<unsigned char>(name[0]);
    for (auto const& symbol : symbols) {
        if (symbol.name == name)
            return symbol.keysym;
    }
    for (auto const& row : numberedSymbols) {
        if (auto const keysym = numbered(row, name))
            return keysym;
    }
    if (auto const keysym = characterByNumber(name))
        return keysym;
    return keysymInAnyCase(name);
}

std::optional<std::string> nameOfKeysym(std::uint32_t keysym)
{
    if (isLetterOrDigit(keysym))
        return std::string(1, static_cast<char>(keysym));
    for (auto const& symbol : symbols) {
        if (symbol.keysym == keysym)
            return std::string(symbol.name);
    }
    for (auto const& row : numberedSymbols) {
        if (keysym >= row.keysym && keysym <= row.keysym + row.last - row.first)
            return std::string(row.prefix) + std::to_string(row.first + keysym - row.keysym);
    }
    auto const character = keysym - unicodeBit;
    if (keysym < unicodeBit || keysymOfCharacter(character) != keysym)
        return std::nullopt;
    std::array<char, 16> text {};
    std::snprintf(text.data(), text.size(), "U%04X", character);
    return text.data();
}

std::optional<std::uint32_t> keysymOfCharacter(char32_t character)
{
    bool const isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    if (isControl || platform::isSurrogate(character) || character > 0x10FFFF)
        return std::nullopt;
    return character <= 0xFF ? character : character + unicodeBit;
}

std::uint32_t lowerCaseKeysym(std::uint32_t keysym)
{
    constexpr std::uint32_t multiplicationSign = 0xD7;
    bool const isCapital
        = (keysym >= 'A' && keysym <= 'Z') || (keysym >= 0xC0 && keysym <= 0xDE && keysym != multiplicationSign);
    return isCapital ? keysym + 0x20 : keysym;
}

} // namespace backends
