#include "platform/foundation/FormatSpecifier.h"

#include <algorithm>

namespace platform {

namespace {

bool take(std::string_view& rest, char character)
{
    if (!rest.starts_with(character))
        return false;
    rest.remove_prefix(1);
    return true;
}

bool startsWithDigit(std::string_view rest) { return !rest.empty() && rest[0] >= '0' && rest[0] <= '9'; }

int readNumber(std::string_view& rest)
{
    int number = 0;
    while (startsWithDigit(rest)) {
        number = std::min(number * 10 + (rest[0] - '0'), FormatSpecifier::largestMeasure);
        rest.remove_prefix(1);
    }
    return number;
}

// "2$". Digits without the dollar sign are a width and stay where they are.
std::optional<std::size_t> readPosition(std::string_view& rest)
{
    if (!startsWithDigit(rest))
        return std::nullopt;
    auto ahead = rest;
    auto const number = readNumber(ahead);
    if (!take(ahead, '$'))
        return std::nullopt;
    rest = ahead;
    return static_cast<std::size_t>(number);
}

FormatMeasure readMeasure(std::string_view& rest)
{
    if (take(rest, '*'))
        return { true, true, 0, readPosition(rest) };
    if (startsWithDigit(rest))
        return { true, false, readNumber(rest), {} };
    return {};
}

void readFlags(std::string_view& rest, FormatSpecifier& specifier)
{
    for (; !rest.empty(); rest.remove_prefix(1)) {
        switch (rest[0]) {
        case '-':
            specifier.isLeftAligned = true;
            break;
        case '+':
            specifier.hasPlus = true;
            break;
        case ' ':
            specifier.hasSpace = true;
            break;
        case '#':
            specifier.isAlternate = true;
            break;
        case '0':
            specifier.hasZeros = true;
            break;
        case '\'':
            break; // Grouping is the locale's business, asked for or not.
        default:
            return;
        }
    }
}

} // namespace

std::optional<FormatSpecifier> FormatSpecifier::read(std::string_view& rest)
{
    FormatSpecifier specifier;
    specifier.position = readPosition(rest);
    readFlags(rest, specifier);
    specifier.width = readMeasure(rest);
    if (take(rest, '.')) {
        specifier.precision = readMeasure(rest);
        specifier.precision.isGiven = true;
    }
    while (!rest.empty() && std::string_view("hlqLztj").find(rest[0]) != std::string_view::npos) {
        specifier.isLong = specifier.isLong || rest[0] != 'h';
        rest.remove_prefix(1);
    }
    if (rest.empty())
        return std::nullopt;
    specifier.conversion = rest[0];
    rest.remove_prefix(1);
    return specifier;
}

} // namespace platform
