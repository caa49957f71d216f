#pragma once

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/StringTable.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A reader of old-style property lists in UTF-8. One object reads one text once.
class OldStyleParser {
public:
    // The text must stay alive as long as the parser.
    explicit OldStyleParser(std::string_view text)
        : m_text(text)
    {
    }

    enum class Braces { Optional, Required };
    Result<Dictionary> parse(Braces braces);

private:
    static constexpr std::size_t maximumDepth = 512;

    std::optional<Dictionary> parseStatements();
    bool parseStatement(Dictionary::Entries& entries);
    std::optional<Value> parseValue();
    std::optional<Value> parseBracket(char bracket);
    std::optional<Value> parseDictionary();
    std::optional<Value> parseList();
    std::optional<Value> parseData();
    std::optional<std::string> parseText();

    bool startsText() const;
    void skipSpace();
    std::size_t spaceLength() const;
    bool atEnd() const { return m_position >= m_text.size(); }
    char here() const { return atEnd() ? '\0' : m_text[m_position]; }
    bool take(char character);

    // Keeps the first mistake with the line of the given position; every caller then gives up.
    std::nullopt_t fail(
        std::size_t position, std::string const& what, StringTableError code = StringTableError::Syntax);
    std::size_t lineOf(std::size_t position) const;

    std::string_view m_text;
    std::size_t m_position = 0;
    std::size_t m_depth = 0;
    std::optional<NSError> m_error;
};

} // namespace platform
