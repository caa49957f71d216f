#pragma once

#include <compare>
#include <string_view>

namespace backends {

// Which of two versions is newer, by the rules that update feeds are written for: runs of digits count as numbers of
// any length, letters make a version older than the same one without them ("2.0b1" before "2.0"), separators followed
// by more make it newer ("2.0" before "2.0 (5)"), missing numbers are zeros ("1.0" is "1.0.0"), and what follows a dash
// does not count.
std::strong_ordering compareVersions(std::string_view left, std::string_view right);

} // namespace backends
