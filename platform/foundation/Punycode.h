#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The ASCII form of one label (RFC 3492), without the "xn--" in front. Absent when the numbers overflow.
std::optional<std::string> punycode(std::u32string_view label);

// The ASCII form of a host name in UTF-8 (RFC 5891): letters in lower case, the ideographic full stops as dots, labels
// with other characters as "xn--" and their code. Absent for text that is not UTF-8, for empty labels except the last,
// and for labels longer than 63 bytes. Lower case is known for Latin, Greek, Cyrillic, Armenian and full-width letters;
// characters are not composed.
std::optional<std::string> asciiHost(std::string_view host);

} // namespace platform
