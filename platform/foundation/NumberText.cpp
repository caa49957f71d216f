#include "platform/foundation/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace platform {

namespace {

// The longest double has 309 digits before the point; the rest is exponent, point and prefix.
constexpr std::size_t longestWholePart = 340;

std::string converted(double number, std::chars_format format, std::optional<int> precision)
{
    std::string buffer(longestWholePart + static_cast<std::size_t>(precision.value_or(0)), '\0');
    auto* const begin = buffer.data();
    auto* const end = begin + buffer.size();
    auto const result
        = precision ? std::to_chars(begin, end, number, format, *precision) : std::to_chars(begin, end, number, format);
    buffer.resize(static_cast<std::size_t>(result.ptr - begin));
    return buffer;
}

// %#g keeps the zeros that %g drops, so the choice between its two forms is made here.
std::string generalWithZeros(double number, int precision)
{
    auto const scientific = converted(number, std::chars_format::scientific, precision - 1);
    auto const exponent = std::atoi(scientific.c_str() + scientific.find('e') + 1);
    if (exponent < -4 || exponent >= precision)
        return scientific;
    return converted(number, std::chars_format::fixed, precision - 1 - exponent);
}

std::string withPoint(std::string number)
{
    if (number.find('.') == std::string::npos)
        number.insert(std::min(number.find_first_of("ep"), number.size()), ".");
    return number;
}

std::string grouped(std::string const& digits, Locale const& locale)
{
    if (locale.groupingSeparator.empty() || locale.grouping.empty())
        return digits;
    std::vector<std::string> groups;
    std::size_t remaining = digits.size();
    for (std::size_t i = 0; remaining > 0;) {
        auto const size = static_cast<unsigned char>(locale.grouping[i]);
        bool const isLast = size == 0 || size >= CHAR_MAX || size >= remaining;
        auto const length = isLast ? remaining : size;
        groups.push_back(digits.substr(remaining - length, length));
        remaining -= length;
        // A zero as the next size repeats this one, as does the end of the list.
        if (i + 1 < locale.grouping.size() && locale.grouping[i + 1] != 0)
            ++i;
    }
    std::string text = groups.back();
    for (auto group = groups.rbegin() + 1; group != groups.rend(); ++group)
        text += locale.groupingSeparator + *group;
    return text;
}

} // namespace

std::string digitsOf(std::uint64_t number, int base)
{
    std::array<char, 64> buffer {};
    auto const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base).ptr;
    return std::string(buffer.data(), end);
}

std::string digitsOf(double number, char conversion, std::optional<int> precision, bool isAlternate)
{
    if (std::isnan(number))
        return "nan";
    if (std::isinf(number))
        return "inf";
    std::string text;
    if (conversion == 'a')
        text = "0x" + converted(number, std::chars_format::hex, precision);
    else if (conversion == 'e')
        text = converted(number, std::chars_format::scientific, precision.value_or(6));
    else if (conversion == 'f')
        text = converted(number, std::chars_format::fixed, precision.value_or(6));
    else if (isAlternate)
        text = generalWithZeros(number, std::max(precision.value_or(6), 1));
    else
        text = converted(number, std::chars_format::general, precision.value_or(6));
    return isAlternate ? withPoint(std::move(text)) : text;
}

std::string localizedNumber(std::string const& number, Locale const& locale)
{
    auto const start = number.find_first_of("0123456789");
    if (start == std::string::npos)
        return number;
    auto const end = std::min(number.find_first_not_of("0123456789", start), number.size());
    auto text = number.substr(0, start) + grouped(number.substr(start, end - start), locale);
    bool const hasPoint = end < number.size() && number[end] == '.';
    return text + (hasPoint ? locale.decimalSeparator : std::string()) + number.substr(hasPoint ? end + 1 : end);
}

} // namespace platform
