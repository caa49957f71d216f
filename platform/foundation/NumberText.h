#pragma once

#include "platform/foundation/Locale.h"

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// Numbers in digits, the same in every locale of the process; a Locale is applied to the finished digits.

// Without sign. Base 8, 10 or 16; hexadecimal in lower case.
std::string digitsOf(std::uint64_t number, int base);

// A number without sign by one of the conversions f, e, g and a (C17, section 7.21.6.1), in lower case. Default
// precision 6, for `a` as many digits as needed. The alternate form always has a decimal point.
std::string digitsOf(double number, char conversion, std::optional<int> precision, bool isAlternate);

// Groups the whole part of a plain decimal number and puts the locale's decimal separator in place of the point. A
// sign in front and an exponent behind stay as they are.
std::string localizedNumber(std::string const& number, Locale const& locale);

} // namespace platform
