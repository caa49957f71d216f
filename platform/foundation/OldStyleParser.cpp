#include "platform/foundation/OldStyleParser.h"

#include "platform/foundation/QuotedText.h"
#include "platform/foundation/Text.h"

namespace platform {

namespace {

bool isUnquoted(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z')
        || (character >= '0' && character <= '9')
        || (character != '\0' && std::string_view("_$/:.-").find(character) != std::string_view::npos);
}

} // namespace

Result<Dictionary> OldStyleParser::parse(Braces braces)
{
    skipSpace();
    std::optional<Dictionary> dictionary;
    if (here() == '{') {
        if (auto const value = parseValue())
            dictionary = *value->asDictionary();
        skipSpace();
        if (dictionary && !atEnd())
            dictionary = fail(m_position, "unexpected text after the closing brace");
    } else if (braces == Braces::Required) {
        fail(m_position, "expected '{'");
    } else {
        dictionary = parseStatements();
        // After a complete statement, what cannot start another one ends the reading without complaint.
        if (dictionary && dictionary->empty() && !atEnd())
            dictionary = fail(m_position, "expected a key");
    }
    if (!dictionary)
        return *m_error;
    return std::move(*dictionary);
}

std::optional<Dictionary> OldStyleParser::parseStatements()
{
    Dictionary::Entries entries;
    for (skipSpace(); startsText(); skipSpace()) {
        if (!parseStatement(entries))
            return std::nullopt;
    }
    return Dictionary(std::move(entries));
}

bool OldStyleParser::parseStatement(Dictionary::Entries& entries)
{
    auto const key = parseText();
    if (!key)
        return false;
    std::optional<Value> value = Value(*key);
    skipSpace();
    if (take('=')) {
        value = parseValue();
        if (!value)
            return false;
        skipSpace();
    }
    if (!take(';')) {
        fail(m_position, "expected ';' after \"" + *key + "\"");
        return false;
    }
    entries.emplace_back(*key, std::move(*value));
    return true;
}

std::optional<Value> OldStyleParser::parseValue()
{
    skipSpace();
    if (startsText()) {
        auto text = parseText();
        return text ? std::optional<Value>(std::move(*text)) : std::nullopt;
    }
    if (atEnd())
        return fail(m_position, "expected a value before the end");
    if (here() != '{' && here() != '(' && here() != '<')
        return fail(m_position, "expected a value");
    if (m_depth == maximumDepth)
        return fail(m_position, "nested too deep", StringTableError::TooDeep);
    ++m_depth;
    auto value = parseBracket(m_text[m_position++]);
    --m_depth;
    return value;
}

std::optional<Value> OldStyleParser::parseBracket(char bracket)
{
    if (bracket == '{')
        return parseDictionary();
    return bracket == '(' ? parseList() : parseData();
}

std::optional<Value> OldStyleParser::parseDictionary()
{
    auto dictionary = parseStatements();
    if (!dictionary)
        return std::nullopt;
    if (!take('}'))
        return fail(m_position, "expected '}'");
    return Value(std::move(*dictionary));
}

std::optional<Value> OldStyleParser::parseList()
{
    List list;
    for (skipSpace(); !take(')'); skipSpace()) {
        auto value = parseValue();
        if (!value)
            return std::nullopt;
        list.push_back(std::move(*value));
        skipSpace();
        if (!take(',') && here() != ')')
            return fail(m_position, "expected ',' or ')'");
    }
    return Value(std::move(list));
}

std::optional<Value> OldStyleParser::parseData()
{
    Data data;
    for (skipSpace(); !take('>'); skipSpace()) {
        auto const high = hexDigitValue(here());
        auto const low = m_position + 1 < m_text.size() ? hexDigitValue(m_text[m_position + 1]) : std::nullopt;
        if (!high || !low)
            return fail(m_position, "expected two hexadecimal digits or '>'");
        data.bytes.push_back(static_cast<std::uint8_t>(*high * 16 + *low));
        m_position += 2;
    }
    return Value(std::move(data));
}

std::optional<std::string> OldStyleParser::parseText()
{
    auto const start = m_position;
    if (here() == '"' || here() == '\'') {
        auto text = readQuotedText(m_text, m_position);
        return text ? std::move(text) : fail(start, "this text has no closing quote");
    }
    while (isUnquoted(here()))
        ++m_position;
    return std::string(m_text.substr(start, m_position - start));
}

bool OldStyleParser::startsText() const { return here() == '"' || here() == '\'' || isUnquoted(here()); }

// White space, and comments, which are white space too.
void OldStyleParser::skipSpace()
{
    for (;;) {
        if (auto const length = spaceLength()) {
            m_position += length;
            continue;
        }
        auto const start = m_text.substr(m_position, 2);
        if (start == "//") {
            while (!atEnd() && here() != '\n' && here() != '\r' && spaceLength() != 3)
                ++m_position;
        } else if (start == "/*") {
            auto const end = m_text.find("*/", m_position + 2);
            m_position = end == std::string_view::npos ? m_text.size() : end + 2;
        } else {
            return;
        }
    }
}

// U+0009 to U+000D and the space; three bytes for the line and paragraph separators U+2028 and U+2029.
std::size_t OldStyleParser::spaceLength() const
{
    if (here() == ' ' || (here() >= '\t' && here() <= '\r'))
        return 1;
    auto const three = m_text.substr(m_position, 3);
    return three == "\xE2\x80\xA8" || three == "\xE2\x80\xA9" ? 3 : 0;
}

bool OldStyleParser::take(char character)
{
    if (atEnd() || here() != character)
        return false;
    ++m_position;
    return true;
}

std::nullopt_t OldStyleParser::fail(std::size_t position, std::string const& what, StringTableError code)
{
    if (!m_error)
        m_error = NSError { "StringTable", static_cast<std::int64_t>(code),
            "Line " + std::to_string(lineOf(position)) + ": " + what + "." };
    return std::nullopt;
}

std::size_t OldStyleParser::lineOf(std::size_t position) const
{
    std::size_t line = 1;
    for (std::size_t i = 0; i < position && i < m_text.size(); ++i) {
        bool const isHalfOfPair = m_text[i] == '\r' && i + 1 < m_text.size() && m_text[i + 1] == '\n';
        if (m_text[i] == '\n' || (m_text[i] == '\r' && !isHalfOfPair))
            ++line;
    }
    return line;
}

} // namespace platform
