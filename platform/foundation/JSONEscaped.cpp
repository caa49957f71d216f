#include "platform/foundation/JSONEscaped.h"

namespace platform {

namespace {

// The letter behind the backslash; 0 for a control character without one.
char shortEscape(char character)
{
    switch (character) {
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return static_cast<unsigned char>(character) < 0x20 ? '\0' : character;
    }
}

void appendEscape(std::string& json, char character)
{
    auto const byte = static_cast<unsigned char>(character);
    if (byte >= 0x80) {
        json += character;
        return;
    }
    constexpr char digits[] = "0123456789abcdef";
    auto const letter = shortEscape(character);
    json += '\\';
    if (letter != '\0')
        json += letter;
    else
        json.append({ 'u', '0', '0', digits[byte >> 4], digits[byte & 0x0F] });
}

} // namespace

void JSONEscaped::escape()
{
    auto rest = m_text;
    while (!rest.empty()) {
        auto const run = plainJSONRun(rest);
        m_escaped += rest.substr(0, run);
        rest.remove_prefix(run);
        if (rest.empty())
            break;
        appendEscape(m_escaped, rest.front());
        rest.remove_prefix(1);
    }
}

} // namespace platform
