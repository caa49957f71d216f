#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The localization that serves a reader of this language best (RFC 4647, section 3.4, and then some): the same, the
// same with fewer subtags ("fr" for "fr-BE"), the same language for another region, never another script. "-" and "_"
// are one, as are capitals and small letters. Absent when none serves.
std::optional<std::string> matchingLocalization(
    std::string_view language, std::vector<std::string> const& localizations);

} // namespace platform
