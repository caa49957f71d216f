#pragma once

#include "platform/foundation/Locale.h"
#include "platform/foundation/Value.h"

#include <string>
#include <string_view>

namespace platform {

// Fills a printf-style format, as translators write it: %@ for any value, %1$@ for a position, and the C conversions
// with flags, width and precision. With a locale, decimal numbers are grouped and get its decimal separator;
// hexadecimal and octal ones are not. Formats come from files, so no mistake in one may do harm: a missing argument
// prints as nothing, an argument of another kind as its description, an unknown conversion as its letter, widths and
// precisions end at 4096. Widths count characters. Any thread.
std::string formatted(std::string_view format, List const& arguments, Locale const* locale);

} // namespace platform
