#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A quoted text of an old-style property list, from the quote at `position` to the same quote again, which may be
// single or double. Moves `position` behind it. Absent when the closing quote is missing. Escapes: the C letters, up
// to three octal digits for a byte of the NextStep character set, \U with up to four digits for a UTF-16 unit; any
// other escaped character stands for itself.
std::optional<std::string> readQuotedText(std::string_view text, std::size_t& position);

} // namespace platform
