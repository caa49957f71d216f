#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text as the machine sees it: UTF-8 inside, UTF-16 and UTF-32 at the doors (Unicode Standard, section 3.9).
namespace platform {

constexpr char32_t replacementCharacter = U'\uFFFD';

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool isSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr char32_t joinSurrogates(char32_t high, char32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

enum class ByteOrder { LittleEndian, BigEndian };
enum class LoneSurrogates { Refused, Replaced };

struct DecodedCharacter {
    char32_t scalar = 0;
    std::size_t length = 0; // bytes, 1 to 4
};

// The character that starts at this byte. Absent at the end and for anything but its one shortest form: overlong
// forms, encoded surrogates and numbers above U+10FFFF are no characters.
std::optional<DecodedCharacter> decodeUTF8(std::string_view bytes, std::size_t position);
bool isValidUTF8(std::string_view bytes);
// Each byte that belongs to no character becomes U+FFFD.
std::string repairedUTF8(std::string_view bytes);
// Characters, or bytes that belong to none.
std::size_t characterCount(std::string_view text);

// Anything that is no scalar value is written as U+FFFD.
void appendUTF8(std::string& text, char32_t scalar);

// A lone surrogate becomes U+FFFD, as everywhere where code units turn into characters.
std::string textFromUTF16(std::u16string_view units);

// Bytes without a byte order mark. Absent when a unit is cut off or, in UTF-32, when a number is no character.
std::optional<std::string> textFromUTF16(std::string_view bytes, ByteOrder order, LoneSurrogates lone);
std::optional<std::string> textFromUTF32(std::string_view bytes, ByteOrder order);

// The number of a digit in base 16, in either case; absent for other characters.
std::optional<unsigned> hexDigitValue(char digit);

// Without what stands at either end and is one of these bytes.
std::string_view trimmed(std::string_view text, std::string_view blanks);

// What stands between the separators, as views of the text. A separator at the end begins nothing.
std::vector<std::string_view> split(std::string_view text, char separator);

// Only A-Z and a-z change, whatever the locale.
std::string asciiLowerCase(std::string_view text);
std::string asciiUpperCase(std::string_view text);

} // namespace platform
