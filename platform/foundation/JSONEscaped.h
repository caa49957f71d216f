#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace platform {

// JSON text (RFC 8259) under the pen.
class JSONWriter {
public:
    // Punctuation and keys that need no escapes, as they stand.
    void literal(std::string_view text) { m_text += text; }

    // In quotes: "/" escaped, control characters as two-letter or lower-case hex escapes, everything else raw.
    void string(std::string_view text);

    // Whether all texts so far are ASCII, and so need no check of their UTF-8.
    bool isASCII() const { return m_isASCII; }
    // Once.
    std::string take() { return std::move(m_text); }

private:
    void escape(char character);

    std::string m_text;
    bool m_isASCII = true;
};

} // namespace platform
