#include "platform/foundation/Text.h"

#include <algorithm>
#include <cstring>

namespace platform {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

char32_t unitAt(std::string_view bytes, std::size_t position, std::size_t size, ByteOrder order)
{
    char32_t unit = 0;
    for (std::size_t i = 0; i < size; ++i) {
        auto const index = order == ByteOrder::BigEndian ? i : size - 1 - i;
        unit = (unit << 8) | static_cast<unsigned char>(bytes[position + index]);
    }
    return unit;
}

// Reads a whole text of UTF-16 units through `unitAt(index)`.
template<typename UnitAt>
std::optional<std::string> joinUnits(std::size_t count, UnitAt unitAt, LoneSurrogates lone)
{
    std::string text;
    text.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        char32_t const unit = unitAt(i);
        if (isHighSurrogate(unit) && i + 1 < count && isLowSurrogate(unitAt(i + 1))) {
            appendUTF8(text, joinSurrogates(unit, unitAt(++i)));
            continue;
        }
        if (isSurrogate(unit) && lone == LoneSurrogates::Refused)
            return std::nullopt;
        appendUTF8(text, unit);
    }
    return text;
}

} // namespace

std::optional<DecodedCharacter> decodeUTF8(std::string_view bytes, std::size_t position)
{
    if (position >= bytes.size())
        return std::nullopt;
    auto const lead = static_cast<unsigned char>(bytes[position]);
    if (lead < 0x80)
        return DecodedCharacter { lead, 1 };
    if (lead < 0xC2 || lead > 0xF4)
        return std::nullopt;
    std::size_t const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (bytes.size() - position < length)
        return std::nullopt;
    char32_t scalar = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        auto const next = static_cast<unsigned char>(bytes[position + i]);
        if (!isContinuation(next))
            return std::nullopt;
        scalar = (scalar << 6) | (next & 0x3FU);
    }
    constexpr char32_t smallest[] = { 0, 0, 0x80, 0x800, 0x10000 };
    if (scalar < smallest[length] || scalar > 0x10FFFF || isSurrogate(scalar))
        return std::nullopt;
    return DecodedCharacter { scalar, length };
}

bool isValidUTF8(std::string_view bytes)
{
    for (std::size_t position = 0; position < bytes.size();) {
        // Eight characters of ASCII at once.
        std::uint64_t word = 0;
        if (bytes.size() - position >= sizeof word) {
            std::memcpy(&word, bytes.data() + position, sizeof word);
            if ((word & 0x8080808080808080) == 0) {
                position += sizeof word;
                continue;
            }
        }
        if (static_cast<unsigned char>(bytes[position]) < 0x80) {
            ++position;
            continue;
        }
        auto const character = decodeUTF8(bytes, position);
        if (!character)
            return false;
        position += character->length;
    }
    return true;
}

std::string repairedUTF8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t position = 0; position < bytes.size();) {
        auto const character = decodeUTF8(bytes, position);
        appendUTF8(text, character ? character->scalar : replacementCharacter);
        position += character ? character->length : 1;
    }
    return text;
}

std::size_t characterCount(std::string_view text)
{
    std::size_t count = 0;
    for (std::size_t position = 0; position < text.size(); ++count) {
        auto const character = decodeUTF8(text, position);
        position += character ? character->length : 1;
    }
    return count;
}

void appendUTF8(std::string& text, char32_t scalar)
{
    if (isSurrogate(scalar) || scalar > 0x10FFFF)
        scalar = replacementCharacter;
    auto const append = [&](char32_t byte) { text.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (scalar < 0x80) {
        append(scalar);
        return;
    }
    if (scalar < 0x800) {
        append(0xC0 | (scalar >> 6));
    } else if (scalar < 0x10000) {
        append(0xE0 | (scalar >> 12));
        append(0x80 | ((scalar >> 6) & 0x3F));
    } else {
        append(0xF0 | (scalar >> 18));
        append(0x80 | ((scalar >> 12) & 0x3F));
        append(0x80 | ((scalar >> 6) & 0x3F));
    }
    append(0x80 | (scalar & 0x3F));
}

std::string textFromUTF16(std::u16string_view units)
{
    auto const unit = [&](std::size_t index) { return static_cast<char32_t>(units[index]); };
    return joinUnits(units.size(), unit, LoneSurrogates::Replaced).value_or(std::string());
}

std::optional<std::string> textFromUTF16(std::string_view bytes, ByteOrder order, LoneSurrogates lone)
{
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    return joinUnits(
        bytes.size() / 2, [&](std::size_t index) { return unitAt(bytes, index * 2, 2, order); }, lone);
}

std::optional<std::string> textFromUTF32(std::string_view bytes, ByteOrder order)
{
    if (bytes.size() % 4 != 0)
        return std::nullopt;
    std::string text;
    text.reserve(bytes.size() / 4);
    for (std::size_t position = 0; position < bytes.size(); position += 4) {
        auto const scalar = unitAt(bytes, position, 4, order);
        if (isSurrogate(scalar) || scalar > 0x10FFFF)
            return std::nullopt;
        appendUTF8(text, scalar);
    }
    return text;
}

std::optional<unsigned> hexDigitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f')
        return static_cast<unsigned>(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F')
        return static_cast<unsigned>(digit - 'A' + 10);
    return std::nullopt;
}

std::string_view trimmed(std::string_view text, std::string_view blanks)
{
    auto const start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        auto const length = std::min(text.find(separator), text.size());
        pieces.push_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return pieces;
}

std::string asciiLowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

std::string asciiUpperCase(std::string_view text)
{
    std::string upper(text);
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    return upper;
}

} // namespace platform
