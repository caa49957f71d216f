#include "platform/foundation/JSONWriter.h"

#include "platform/foundation/JSONRun.h"

#include <algorithm>

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
    // With both quotes, and an escape.
    makeRoom(text.size() + 8);
    m_start[m_size++] = '"';
    while (true) {
        auto const run = plainJSONRun(text);
        std::memcpy(m_start + m_size, text.data(), run);
        m_size += run;
        if (run == text.size())
            break;
        escape(text[run]);
        text.remove_prefix(run + 1);
        makeRoom(text.size() + 8);
    }
    m_start[m_size++] = '"';
}

void JSONWriter::escape(char character)
{
    if (static_cast<unsigned char>(character) >= 0x80) {
        m_isASCII = false;
        m_start[m_size++] = character;
        return;
    }
    constexpr char digits[] = "0123456789abcdef";
    auto const letter = shortEscape(character);
    m_start[m_size++] = '\\';
    if (letter != '\0') {
        m_start[m_size++] = letter;
        return;
    }
    auto const byte = static_cast<unsigned char>(character);
    for (char const part : { 'u', '0', '0', digits[byte >> 4], digits[byte & 0x0F] })
        m_start[m_size++] = part;
}

void JSONWriter::grow(std::size_t more)
{
    bool const wasShort = m_long.empty();
    m_long.resize(std::max(m_capacity * 2, m_size + more));
    if (wasShort)
        std::memcpy(m_long.data(), m_short.data(), m_size);
    m_start = m_long.data();
    m_capacity = m_long.size();
}

} // namespace platform
