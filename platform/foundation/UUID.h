#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// A random identifier of 128 bits (RFC 9562, version 4). Two fresh ones are never equal.
class UUID {
public:
    static UUID random();

    // 36 characters, upper case: "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
    std::string uuidString() const;

    auto operator<=>(UUID const&) const = default;

private:
    std::array<std::uint8_t, 16> m_bytes {};
};

} // namespace platform
