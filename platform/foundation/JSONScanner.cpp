#include "platform/foundation/JSONScanner.h"

#include "platform/foundation/Text.h"

namespace platform {

namespace {

// Reads the inside of one string; the scan has already found both of its quotes.
class StringReader {
public:
    StringReader(std::string_view text, std::size_t position)
        : m_text(text)
        , m_position(position)
    {
    }

    std::optional<std::string> read();

private:
    bool readEscape();
    bool readUnicodeEscape();
    std::optional<char32_t> readUnit();

    std::string_view m_text;
    std::size_t m_position;
    std::string m_result;
};

std::optional<std::string> StringReader::read()
{
    while (m_position < m_text.size()) {
        auto const character = decodeUTF8(m_text, m_position);
        if (!character || character->scalar < 0x20)
            return std::nullopt;
        auto const start = m_position;
        m_position += character->length;
        if (character->scalar == '"')
            return std::move(m_result);
        if (character->scalar != '\\')
            m_result.append(m_text, start, character->length);
        else if (!readEscape())
            return std::nullopt;
    }
    return std::nullopt;
}

bool StringReader::readEscape()
{
    if (m_position >= m_text.size())
        return false;
    char const letter = m_text[m_position++];
    switch (letter) {
    case '"':
    case '\\':
    case '/':
        m_result += letter;
        return true;
    case 'b':
        m_result += '\b';
        return true;
    case 'f':
        m_result += '\f';
        return true;
    case 'n':
        m_result += '\n';
        return true;
    case 'r':
        m_result += '\r';
        return true;
    case 't':
        m_result += '\t';
        return true;
    case 'u':
        return readUnicodeEscape();
    default:
        return false;
    }
}

bool StringReader::readUnicodeEscape()
{
    auto const unit = readUnit();
    if (!unit || isLowSurrogate(*unit))
        return false;
    if (!isHighSurrogate(*unit)) {
        appendUTF8(m_result, *unit);
        return true;
    }
    if (m_text.substr(m_position, 2) != "\\u")
        return false;
    m_position += 2;
    auto const low = readUnit();
    if (!low || !isLowSurrogate(*low))
        return false;
    appendUTF8(m_result, joinSurrogates(*unit, *low));
    return true;
}

std::optional<char32_t> StringReader::readUnit()
{
    if (m_text.size() - m_position < 4)
        return std::nullopt;
    char32_t unit = 0;
    for (int i = 0; i < 4; ++i) {
        auto const digit = hexDigitValue(m_text[m_position++]);
        if (!digit)
            return std::nullopt;
        unit = unit * 16 + *digit;
    }
    return unit;
}

} // namespace

std::optional<std::string> JSONScanner::string(std::string_view text, std::size_t start)
{
    return StringReader(text, start + 1).read();
}

std::optional<std::vector<JSONMember>> JSONScanner::members()
{
    skipWhiteSpace();
    if (here() != '{' || !scanDocument())
        return std::nullopt;
    skipWhiteSpace();
    if (!atEnd())
        return std::nullopt;
    return std::move(m_members);
}

// Walks with a list of owed brackets in place of recursion, so that depth costs a byte and not a stack frame.
bool JSONScanner::scanDocument()
{
    m_valueFollows = true;
    while (m_valueFollows || !m_open.empty()) {
        skipWhiteSpace();
        if (m_valueFollows) {
            noteValue();
            if (!scanOpening())
                return false;
            continue;
        }
        if (closes())
            continue;
        if (!take(',') || !scanAfterComma())
            return false;
    }
    return true;
}

// Takes a value, or the bracket that opens one.
bool JSONScanner::scanOpening()
{
    bool const isObject = here() == '{';
    if (!isObject && here() != '[') {
        m_valueFollows = false;
        return scanScalar();
    }
    if (m_open.size() == maximumDepth)
        return false;
    ++m_position;
    m_open.push_back(isObject ? '}' : ']');
    return scanAfterComma();
}

// After a comma as after an opening bracket: the end of the list, or its next value.
bool JSONScanner::scanAfterComma()
{
    skipWhiteSpace();
    m_valueFollows = !closes();
    return !m_valueFollows || m_open.back() == ']' || scanKey();
}

bool JSONScanner::scanKey()
{
    auto const start = m_position;
    if (here() != '"' || !skipString())
        return false;
    if (m_open.size() == 1) {
        auto key = string(m_text, start);
        if (!key)
            return false;
        m_members.push_back({ std::move(*key), 0, false });
    }
    skipWhiteSpace();
    return take(':');
}

bool JSONScanner::scanScalar()
{
    switch (here()) {
    case '"':
        return skipString();
    case 't':
        return scanWord("true");
    case 'f':
        return scanWord("false");
    case 'n':
        return scanWord("null");
    default:
        break;
    }
    if (here() != '-' && (here() < '0' || here() > '9'))
        return false;
    skipNumber();
    return true;
}

bool JSONScanner::scanWord(std::string_view word)
{
    if (m_text.substr(m_position, word.size()) != word)
        return false;
    m_position += word.size();
    return true;
}

bool JSONScanner::skipString()
{
    ++m_position;
    while (!atEnd()) {
        if (take('"'))
            return true;
        if (here() != '\\')
            ++m_position;
        else if (!skipEscape())
            return false;
    }
    return false;
}

// The four bytes after \u are not looked at, but a quote among them would hide the end of the string.
bool JSONScanner::skipEscape()
{
    ++m_position;
    if (atEnd())
        return false;
    if (m_text[m_position++] != 'u')
        return true;
    auto const digits = m_text.substr(m_position, 4);
    m_position += digits.size();
    return digits.size() == 4 && digits.find('"') == std::string_view::npos;
}

void JSONScanner::skipNumber()
{
    auto const end = m_text.find_first_not_of("0123456789.+-eE", m_position);
    m_position = end == std::string_view::npos ? m_text.size() : end;
}

void JSONScanner::skipWhiteSpace()
{
    auto const end = m_text.find_first_not_of(" \t\r\n", m_position);
    m_position = end == std::string_view::npos ? m_text.size() : end;
}

bool JSONScanner::closes()
{
    if (!take(m_open.back()))
        return false;
    m_open.pop_back();
    return true;
}

void JSONScanner::noteValue()
{
    if (m_open.size() != 1 || m_open.back() != '}')
        return;
    m_members.back().valueStart = m_position;
    m_members.back().isString = here() == '"';
}

bool JSONScanner::take(char character)
{
    if (atEnd() || here() != character)
        return false;
    ++m_position;
    return true;
}

} // namespace platform
