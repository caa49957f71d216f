#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

// Reads the JSON text of a flat object of strings as a writer without white space leaves it, in one go and without
// noting anything down. It understands only that: every other text, be it right or wrong, is left to JSONObject.
class JSONShortReader {
public:
    // Fills in the texts under the keys, one for one. False when the object is not as simple as that, when a member has
    // none of the keys, or a key has no member or more than one; the texts are of no use then.
    static bool read(std::string_view json, std::span<std::string_view const> keys, std::span<std::string> texts);

private:
    explicit JSONShortReader(std::string_view rest)
        : m_rest(rest)
    {
    }

    bool take(char character)
    {
        if (m_rest.empty() || m_rest.front() != character)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    std::optional<std::string_view> plainString();
    bool string(std::string& text);
    bool unescape(std::string& text);

    std::string_view m_rest;
};

} // namespace platform
