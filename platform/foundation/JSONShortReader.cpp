#include "platform/foundation/JSONShortReader.h"

#include "platform/foundation/JSONRun.h"
#include "platform/foundation/Text.h"

#include <algorithm>

namespace platform {

inline std::optional<std::string_view> JSONShortReader::plainString()
{
    if (!take('"'))
        return std::nullopt;
    auto const text = m_rest.substr(0, plainJSONRun(m_rest));
    m_rest.remove_prefix(text.size());
    return take('"') ? std::optional(text) : std::nullopt;
}

inline bool JSONShortReader::string(std::string& text)
{
    if (!take('"'))
        return false;
    auto const run = plainJSONRun(m_rest);
    text.assign(m_rest.substr(0, run));
    m_rest.remove_prefix(run);
    while (!take('"')) {
        if (m_rest.empty() || !unescape(text))
            return false;
        auto const plain = plainJSONRun(m_rest);
        text.append(m_rest.substr(0, plain));
        m_rest.remove_prefix(plain);
    }
    return true;
}

// Takes the one character that stopped a run, if it is one of the common ones.
bool JSONShortReader::unescape(std::string& text)
{
    if (m_rest.front() == '\\') {
        // The rarer escapes are a matter for those who know them all.
        if (m_rest.size() < 2 || (m_rest[1] != '/' && m_rest[1] != '"' && m_rest[1] != '\\'))
            return false;
        text += m_rest[1];
        m_rest.remove_prefix(2);
        return true;
    }
    auto const character = decodeUTF8(m_rest, 0);
    if (!character || character->scalar < 0x20)
        return false;
    text.append(m_rest.substr(0, character->length));
    m_rest.remove_prefix(character->length);
    return true;
}

bool JSONShortReader::read(std::string_view json, std::span<std::string_view const> keys, std::span<std::string> texts)
{
    JSONShortReader reader(json);
    unsigned missing = (1U << keys.size()) - 1;
    if (!reader.take('{'))
        return false;
    do {
        auto const key = reader.plainString();
        if (!key || !reader.take(':'))
            return false;
        auto const index = static_cast<std::size_t>(std::find(keys.begin(), keys.end(), *key) - keys.begin());
        if (index == keys.size() || (missing & (1U << index)) == 0)
            return false;
        missing &= ~(1U << index);
        if (!reader.string(texts[index]))
            return false;
    } while (reader.take(','));
    return reader.take('}') && reader.m_rest.empty() && missing == 0;
}

} // namespace platform
