#include "platform/foundation/QuotedText.h"

#include "platform/foundation/Text.h"

#include <cstdint>

namespace platform {

namespace {

constexpr std::uint16_t nextStepUpperHalf[128] = {
#include "platform/foundation/NextStepCharacters.inc"
};

class QuotedTextReader {
public:
    QuotedTextReader(std::string_view text, std::size_t position)
        : m_text(text)
        , m_position(position)
    {
    }

    bool read();
    std::size_t position() const { return m_position; }
    std::string takeResult() { return std::move(m_result); }

private:
    bool readEscape();
    void readOctal();
    void readUnit();
    void append(char character);
    void append(char32_t unit);
    void flushHighSurrogate();

    std::string_view m_text;
    std::size_t m_position;
    std::string m_result;
    // The first half of a pair, waiting for a second one written as its own escape.
    char32_t m_highSurrogate = 0;
};

bool QuotedTextReader::read()
{
    char const quote = m_text[m_position++];
    while (m_position < m_text.size()) {
        char const character = m_text[m_position++];
        if (character == quote) {
            flushHighSurrogate();
            return true;
        }
        if (character != '\\')
            append(character);
        else if (!readEscape())
            return false;
    }
    return false;
}

bool QuotedTextReader::readEscape()
{
    if (m_position >= m_text.size())
        return false;
    char const letter = m_text[m_position];
    if (letter >= '0' && letter <= '7') {
        readOctal();
        return true;
    }
    ++m_position;
    switch (letter) {
    case 'a':
        append('\a');
        return true;
    case 'b':
        append('\b');
        return true;
    case 'f':
        append('\f');
        return true;
    case 'n':
        append('\n');
        return true;
    case 'r':
        append('\r');
        return true;
    case 't':
        append('\t');
        return true;
    case 'v':
        append('\v');
        return true;
    // Only the capital letter: \u is an escaped "u" like any other letter.
    case 'U':
        readUnit();
        return true;
    default:
        append(letter);
        return true;
    }
}

void QuotedTextReader::readOctal()
{
    unsigned number = 0;
    for (int i = 0; i < 3 && m_position < m_text.size(); ++i) {
        char const digit = m_text[m_position];
        if (digit < '0' || digit > '7')
            break;
        number = number * 8 + static_cast<unsigned>(digit - '0');
        ++m_position;
    }
    auto const byte = number & 0xFF;
    append(byte < 0x80 ? static_cast<char32_t>(byte) : static_cast<char32_t>(nextStepUpperHalf[byte - 0x80]));
}

void QuotedTextReader::readUnit()
{
    char32_t unit = 0;
    for (int i = 0; i < 4 && m_position < m_text.size(); ++i) {
        auto const digit = hexDigitValue(m_text[m_position]);
        if (!digit)
            break;
        unit = unit * 16 + *digit;
        ++m_position;
    }
    append(unit);
}

void QuotedTextReader::append(char character)
{
    flushHighSurrogate();
    m_result += character;
}

void QuotedTextReader::append(char32_t unit)
{
    if (m_highSurrogate != 0 && isLowSurrogate(unit)) {
        appendUTF8(m_result, joinSurrogates(m_highSurrogate, unit));
        m_highSurrogate = 0;
        return;
    }
    flushHighSurrogate();
    if (isHighSurrogate(unit))
        m_highSurrogate = unit;
    else
        appendUTF8(m_result, unit);
}

void QuotedTextReader::flushHighSurrogate()
{
    if (m_highSurrogate != 0)
        appendUTF8(m_result, replacementCharacter);
    m_highSurrogate = 0;
}

} // namespace

std::optional<std::string> readQuotedText(std::string_view text, std::size_t& position)
{
    QuotedTextReader reader(text, position);
    if (!reader.read())
        return std::nullopt;
    position = reader.position();
    return reader.takeResult();
}

} // namespace platform
