#pragma once

#include <optional>
#include <string_view>

namespace backends {

// A date as feeds write it (RFC 822, section 5, with years of four digits), in seconds since 1970. Absent for anything
// else.
std::optional<double> dateFromText(std::string_view text);

} // namespace backends
