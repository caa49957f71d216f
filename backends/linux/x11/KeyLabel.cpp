#include "backends/linux/x11/KeyLabel.h"

#include "platform/foundation/Text.h"

#include <array>
#include <string_view>

namespace backends {

namespace {

// Symbols from here on are Unicode characters; the X protocol's key symbol encoding.
constexpr xcb_keysym_t unicodeSymbols = 0x01000000, lastUnicodeSymbol = 0x0110FFFF;

// The older ones have a table for each alphabet. Of those these are still what layouts are written with.
struct Alphabet {
    xcb_keysym_t first;
    std::u32string_view characters;
};
constexpr std::array<Alphabet, 3> alphabets { {
    // ISO 8859-2.
    { 0x1A1,
        U"Ą˘Ł¤ĽŚ§¨ŠŞŤŹ\u00ADŽŻ°ą˛ł´ľśˇ¸šşťź˝žżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎ"
        U"ĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙" },
    { 0x6C0, U"ЮАБЦДЕФГХИЙКЛМНОПЯРСТУЖВЬЫЗШЭЩЧЪ" },
    { 0x7E1, U"ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΣΤΥΦΧΨΩ" },
} };

// Zero for a symbol that is no text.
char32_t characterOf(xcb_keysym_t symbol)
{
    bool const isLatin = (symbol > 0x20 && symbol < 0x7F) || (symbol > 0xA0 && symbol <= 0xFF);
    if (isLatin)
        return symbol;
    if (symbol > unicodeSymbols + 0x20 && symbol <= lastUnicodeSymbol)
        return symbol - unicodeSymbols;
    for (auto const& [first, characters] : alphabets) {
        if (symbol >= first && symbol - first < characters.size())
            return characters[symbol - first];
    }
    return 0;
}

// Of the alphabets with two cases that keyboards are made for. Not the C library's, which depends on the locale.
char32_t capital(char32_t character)
{
    auto const isIn = [character](char32_t first, char32_t last) { return character >= first && character <= last; };
    if (isIn(U'a', U'z') || (isIn(0xE0, 0xFE) && character != 0xF7) || (isIn(0x3B1, 0x3C9) && character != 0x3C2)
        || isIn(0x430, 0x44F))
        return character - 0x20;
    if (isIn(0x450, 0x45F))
        return character - 0x50;
    if (character == 0xFF)
        return 0x178;
    if (character == 0x3C2)
        return 0x3A3;
    // The rest of Latin and Cyrillic goes in pairs: first the capital, mostly an even number.
    bool const isOddPair = isIn(0x139, 0x148) || isIn(0x179, 0x17E) || isIn(0x1AF, 0x1B0);
    bool const isPair = isIn(0x100, 0x12F) || isIn(0x132, 0x137) || isIn(0x14A, 0x177) || isIn(0x1A0, 0x1A5)
        || isIn(0x48A, 0x4BF) || isIn(0x4D0, 0x52F) || isIn(0x1E00, 0x1E95) || isIn(0x1EA0, 0x1EFF);
    bool const isSmall = (isPair && character % 2 == 1) || (isOddPair && character % 2 == 0);
    return isSmall ? character - 1 : character;
}

} // namespace

std::optional<std::string> keyLabel(xcb_keysym_t symbol)
{
    auto const character = characterOf(symbol);
    if (!character)
        return std::nullopt;
    std::string label;
    platform::appendUTF8(label, capital(character));
    return label;
}

} // namespace backends
