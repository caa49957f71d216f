#include "platform/foundation/JSONWriter.h"

#include "platform/foundation/JSONRun.h"

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

} // namespace

void JSONWriter::string(std::string_view text)
{
    m_text += '"';
    while (true) {
        auto const run = plainJSONRun(text);
        m_text += text.substr(0, run);
        if (run == text.size())
            break;
        escape(text[run]);
        text.remove_prefix(run + 1);
    }
    m_text += '"';
}

void JSONWriter::escape(char character)
{
    auto const byte = static_cast<unsigned char>(character);
    if (byte >= 0x80) {
        m_isASCII = false;
        m_text += character;
        return;
    }
    constexpr char digits[] = "0123456789abcdef";
    auto const letter = shortEscape(character);
    m_text += '\\';
    if (letter != '\0')
        m_text += letter;
    else
        m_text.append({ 'u', '0', '0', digits[byte >> 4], digits[byte & 0x0F] });
}

} // namespace platform
