#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace backends {

// The bytes of a base64 text (RFC 4648, section 4) with all of its padding. White space around it does not count;
// absent for anything else that is not of the alphabet.
std::optional<std::vector<std::uint8_t>> bytesFromBase64(std::string_view text);

} // namespace backends
