#pragma once

#include "platform/foundation/NSError.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace backends {

// Whether one of the keys has signed exactly these bytes: Ed25519 (RFC 8032) over all of them, the signature and the
// keys in base64. Absent when it has, else why that cannot be said: no key at all, no signature, one that cannot be
// read, none that fits, no bytes. A key that cannot be read counts as none. Any thread. The library that verifies is
// loaded with the first question.
std::optional<platform::NSError> whyNotSigned(
    std::span<std::uint8_t const> bytes, std::string const& signature, std::vector<std::string> const& keys);

} // namespace backends
