#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Reads an address leniently (RFC 3986, section 3): cuts it at its delimiters and percent-encodes in every part what
// may not stand there. One object reads one text once.
class URLParser {
public:
    explicit URLParser(std::string_view text)
        : m_rest(text)
    {
    }

    // Absent when no encoding can mend it.
    std::optional<std::string> parse();

private:
    bool takeScheme();
    bool takeAuthority();
    bool takeHostAndPort(std::string_view hostAndPort);
    bool takeHost(std::string_view host);
    bool takeAddressLiteral(std::string_view literal);
    bool takePort(std::string_view port);
    std::string_view takeUntil(char const* delimiters);

    std::string_view m_rest;
    std::string m_scheme; // in lower case; empty for a relative reference
    std::string m_result;
};

// Percent-encodes every byte that may not stand in a path.
enum class ValidEscapes { Kept, Encoded };
std::string percentEncodedPath(std::string_view path, ValidEscapes escapes);
// The bytes that the escapes stand for; a "%" that is no escape stays.
std::string percentDecoded(std::string_view text);

} // namespace platform
