#pragma once

#include "platform/foundation/JSONRun.h"

#include <string>
#include <string_view>

namespace platform {

// A text as it stands between the quotes of a JSON string (RFC 8259): "/" escaped, control characters as two-letter or
// lower-case hex escapes, everything else raw. Nearly every text stands for itself and is not copied: it has to live
// as long as this.
class JSONEscaped {
public:
    explicit JSONEscaped(std::string_view text)
        : m_text(text)
        , m_isPlain(isPlainInJSON(text))
    {
        if (!m_isPlain)
            escape();
    }

    std::string_view text() const { return m_isPlain ? m_text : m_escaped; }
    // ASCII that needed no escapes.
    bool isPlain() const { return m_isPlain; }

private:
    void escape();

    std::string_view m_text;
    bool m_isPlain;
    std::string m_escaped;
};

} // namespace platform
