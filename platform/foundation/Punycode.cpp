#include "platform/foundation/Punycode.h"

#include "platform/foundation/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace platform {

namespace {

// The parameters of RFC 3492, section 5.
constexpr std::uint32_t base = 36;
constexpr std::uint32_t smallestThreshold = 1;
constexpr std::uint32_t largestThreshold = 26;
constexpr std::uint32_t skew = 38;
constexpr std::uint32_t damp = 700;
constexpr std::uint32_t initialBias = 72;
constexpr std::size_t longestLabel = 63;

std::uint32_t adaptedBias(std::uint32_t delta, std::uint32_t count, bool isFirst)
{
    delta = isFirst ? delta / damp : delta / 2;
    delta += delta / count;
    std::uint32_t bias = 0;
    for (; delta > (base - smallestThreshold) * largestThreshold / 2; bias += base)
        delta /= base - smallestThreshold;
    return bias + (base - smallestThreshold + 1) * delta / (delta + skew);
}

char digit(std::uint32_t number) { return static_cast<char>(number < 26 ? 'a' + number : '0' + (number - 26)); }

void appendNumber(std::string& code, std::uint32_t number, std::uint32_t bias)
{
    for (std::uint32_t place = base;; place += base) {
        auto const threshold
            = place <= bias ? smallestThreshold : std::min(std::max(place - bias, smallestThreshold), largestThreshold);
        if (number < threshold)
            break;
        code.push_back(digit(threshold + (number - threshold) % (base - threshold)));
        number = (number - threshold) / (base - threshold);
    }
    code.push_back(digit(number));
}

bool isBetween(char32_t character, char32_t first, char32_t last) { return character >= first && character <= last; }

// Blocks in which capitals and small letters take turns, the capital on the even or on the odd number.
bool isEvenCapital(char32_t c)
{
    return isBetween(c, 0x100, 0x12F) || isBetween(c, 0x132, 0x137) || isBetween(c, 0x14A, 0x177)
        || isBetween(c, 0x460, 0x481) || isBetween(c, 0x48A, 0x4BF) || isBetween(c, 0x4D0, 0x52F)
        || isBetween(c, 0x1E00, 0x1E95) || isBetween(c, 0x1EA0, 0x1EFF);
}

bool isOddCapital(char32_t c)
{
    return isBetween(c, 0x139, 0x148) || isBetween(c, 0x179, 0x17E) || isBetween(c, 0x4C1, 0x4CE);
}

char32_t lowerCase(char32_t c)
{
    if (isBetween(c, 'A', 'Z') || (isBetween(c, 0xC0, 0xDE) && c != 0xD7))
        return c + 0x20;
    if (isEvenCapital(c))
        return c | 1;
    if (isOddCapital(c))
        return c % 2 == 1 ? c + 1 : c;
    if (c == 0x178)
        return 0xFF;
    if (c == 0x386)
        return 0x3AC;
    if (isBetween(c, 0x388, 0x38A))
        return c + 37;
    if (c == 0x38C)
        return 0x3CC;
    if (c == 0x38E || c == 0x38F)
        return c + 63;
    if ((isBetween(c, 0x391, 0x3AB) && c != 0x3A2) || isBetween(c, 0x410, 0x42F))
        return c + 0x20;
    if (isBetween(c, 0x400, 0x40F))
        return c + 0x50;
    if (isBetween(c, 0x531, 0x556))
        return c + 0x30;
    // Full-width letters and digits are the ASCII ones in another shape.
    if (isBetween(c, 0xFF01, 0xFF5E))
        return lowerCase(c - 0xFEE0);
    return c;
}

bool isDot(char32_t c) { return c == '.' || c == 0x3002 || c == 0xFF0E || c == 0xFF61; }

std::optional<std::string> asciiLabel(std::u32string const& label)
{
    std::string text;
    if (std::all_of(label.begin(), label.end(), [](char32_t c) { return c < 0x80; })) {
        text.assign(label.begin(), label.end());
    } else {
        auto const code = punycode(label);
        if (!code)
            return std::nullopt;
        text = "xn--" + *code;
    }
    return text.size() <= longestLabel ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace

std::optional<std::string> punycode(std::u32string_view label)
{
    std::string code;
    for (char32_t const character : label) {
        if (character < 0x80)
            code.push_back(static_cast<char>(character));
    }
    auto const basicCount = static_cast<std::uint32_t>(code.size());
    if (basicCount > 0)
        code.push_back('-');
    std::uint32_t current = 0x80;
    std::uint32_t bias = initialBias;
    std::uint64_t delta = 0;
    for (auto handled = basicCount; handled < label.size();) {
        std::uint32_t next = 0xFFFFFFFF;
        for (char32_t const character : label) {
            if (character >= current)
                next = std::min(next, static_cast<std::uint32_t>(character));
        }
        delta += static_cast<std::uint64_t>(next - current) * (handled + 1);
        current = next;
        for (char32_t const character : label) {
            if (character < current)
                ++delta;
            if (delta > std::numeric_limits<std::uint32_t>::max())
                return std::nullopt;
            if (character != current)
                continue;
            appendNumber(code, static_cast<std::uint32_t>(delta), bias);
            bias = adaptedBias(static_cast<std::uint32_t>(delta), handled + 1, handled == basicCount);
            delta = 0;
            ++handled;
        }
        ++delta;
        ++current;
    }
    return code;
}

std::optional<std::string> asciiHost(std::string_view host)
{
    std::string text;
    std::u32string label;
    for (std::size_t position = 0; position < host.size();) {
        auto const character = decodeUTF8(host, position);
        if (!character)
            return std::nullopt;
        position += character->length;
        if (!isDot(character->scalar)) {
            label.push_back(lowerCase(character->scalar));
            // No code is shorter than its label, so a hopeless one ends here and not after a long computation.
            if (label.size() > longestLabel)
                return std::nullopt;
            continue;
        }
        auto const ascii = asciiLabel(label);
        if (!ascii || ascii->empty())
            return std::nullopt;
        text += *ascii + ".";
        label.clear();
    }
    auto const last = asciiLabel(label);
    return last ? std::optional<std::string>(text + *last) : std::nullopt;
}

} // namespace platform
