#pragma once

#include "platform/foundation/JSONScanner.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// A flat object of strings as JSON text (RFC 8259), always the same bytes for the same members: keys in byte order,
// no white space, "/" escaped, control characters as two-letter or lower-case hex escapes, everything else raw. Bytes
// that are not UTF-8 are copied too: whoever takes text from strangers checks the result with isValidUTF8().
std::string jsonObjectText(std::map<std::string, std::string> const& members);

// A JSON object somebody else wrote. Tolerant where nobody looks: members that are never asked for need only have
// their brackets and quotes in order. May be read from any thread.
class JSONObject {
public:
    // UTF-8, or UTF-16 or UTF-32 told by a byte order mark or by the zeros among the first four bytes. Absent for
    // whatever is not one object with proper keys, nested at most 512 deep.
    static std::optional<JSONObject> scan(std::string_view bytes);

    // The text under a key. Of members with the same key the first counts. Absent when there is none, when it is no
    // string, and when the string is malformed.
    std::optional<std::string> string(std::string_view key) const;

private:
    JSONObject(std::string text, std::vector<JSONMember> members)
        : m_text(std::move(text))
        , m_members(std::move(members))
    {
    }

    std::string m_text;
    std::vector<JSONMember> m_members;
};

} // namespace platform
