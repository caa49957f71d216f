#include "backends/linux/x11/PropertyValues.h"

#include "platform/foundation/Text.h"

#include <algorithm>
#include <limits>

namespace backends {

std::span<std::uint32_t const> wordsOf(xcb_get_property_reply_t const* reply)
{
    if (!reply || reply->format != 32)
        return {};
    return { static_cast<std::uint32_t const*>(xcb_get_property_value(reply)), reply->value_len };
}

std::optional<std::uint32_t> firstWordOf(xcb_get_property_reply_t const* reply)
{
    auto const words = wordsOf(reply);
    return words.empty() ? std::nullopt : std::optional(words[0]);
}

std::int32_t pixelsIn(std::uint32_t word)
{
    // No place of the protocol has more bits.
    using Place = std::numeric_limits<std::int16_t>;
    return std::clamp<std::int32_t>(static_cast<std::int32_t>(word), Place::min(), Place::max());
}

std::string bytesOf(xcb_get_property_reply_t const* reply)
{
    if (!reply || reply->format != 8)
        return {};
    return { static_cast<char const*>(xcb_get_property_value(reply)), reply->value_len };
}

std::string textFromLatin1(std::string const& bytes)
{
    std::string text;
    for (char const byte : bytes)
        platform::appendUTF8(text, static_cast<unsigned char>(byte));
    return text;
}

} // namespace backends
