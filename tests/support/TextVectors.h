#pragma once

#include "tests/support/Vectors.h"

#include <string>

namespace platform {

// Bytes that are no text stand in an example as hexadecimal digits.
inline std::string bytesFromHex(std::string const& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

} // namespace platform
