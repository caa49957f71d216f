#include "backends/shared/Base64.h"

#include "platform/foundation/Text.h"

#include <algorithm>
#include <cstddef>

namespace backends {

std::optional<std::vector<std::uint8_t>> bytesFromBase64(std::string_view text)
{
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    text = platform::trimmed(text, " \t\r\n\v\f");
    if (text.size() % 4 != 0)
        return std::nullopt;
    auto const padding = std::min<std::size_t>(text.size() - text.find_last_not_of('=') - 1, text.size());
    if (padding > 2)
        return std::nullopt;
    std::vector<std::uint8_t> bytes;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (char const digit : text.substr(0, text.size() - padding)) {
        auto const value = alphabet.find(digit);
        if (value == std::string_view::npos)
            return std::nullopt;
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    // One value has one text: what is left over is zero.
    if ((bits & ((1u << count) - 1)) != 0)
        return std::nullopt;
    return bytes;
}

} // namespace backends
