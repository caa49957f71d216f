#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// One member of the outermost object: its key in full, its value as it stands in the text.
struct JSONMember {
    std::string key;
    std::size_t valueStart = 0;
    bool isString = false;
};

// The first look at a JSON text (RFC 8259): brackets, commas and quotes are checked, the inside of numbers and of
// strings is not, since most of it is never asked for. One comma before a closing bracket is let pass.
class JSONScanner {
public:
    // The text must stay alive as long as the scanner.
    explicit JSONScanner(std::string_view text)
        : m_text(text)
    {
    }

    // The members of the object that the text is. Absent when the structure is broken, when brackets are nested more
    // than 512 deep, when a key of the outermost object is no proper string, and when the text is no object.
    std::optional<std::vector<JSONMember>> members();

    // The string whose opening quote stands at `start`, by all the rules: valid UTF-8, no raw control characters,
    // known escapes, surrogates only in pairs.
    static std::optional<std::string> string(std::string_view text, std::size_t start);

private:
    static constexpr std::size_t maximumDepth = 512;

    bool scanDocument();
    bool scanOpening();
    bool scanAfterComma();
    bool scanKey();
    bool scanScalar();
    bool scanWord(std::string_view word);
    bool skipString();
    bool skipEscape();
    void skipNumber();
    void skipWhiteSpace();
    bool closes();
    void noteValue();

    bool atEnd() const { return m_position >= m_text.size(); }
    char here() const { return atEnd() ? '\0' : m_text[m_position]; }
    bool take(char character);

    std::string_view m_text;
    std::size_t m_position = 0;
    std::string m_open; // the closing brackets still owed, innermost last
    bool m_valueFollows = false;
    std::vector<JSONMember> m_members;
};

} // namespace platform
