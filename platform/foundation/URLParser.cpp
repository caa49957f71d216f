#include "platform/foundation/URLParser.h"

#include "platform/foundation/Punycode.h"
#include "platform/foundation/Text.h"

#include <algorithm>

namespace platform {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

// "unreserved" and "sub-delims" of RFC 3986, section 2; what further characters a part allows is added by the caller.
bool isAllowed(char c, std::string_view further)
{
    return isLetter(c) || isDigit(c) || isOneOf(c, "-._~!$&'()*+,;=") || isOneOf(c, further);
}

constexpr std::string_view userCharacters = ":";
constexpr std::string_view pathCharacters = ":@/";
constexpr std::string_view queryCharacters = ":@/?";

bool isEscape(std::string_view text, std::size_t position)
{
    return text[position] == '%' && position + 2 < text.size() && hexDigitValue(text[position + 1])
        && hexDigitValue(text[position + 2]);
}

std::string encoded(std::string_view text, std::string_view further, ValidEscapes escapes = ValidEscapes::Kept)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isAllowed(text[i], further) || (escapes == ValidEscapes::Kept && isEscape(text, i))) {
            result += text[i];
            continue;
        }
        auto const byte = static_cast<unsigned char>(text[i]);
        result += { '%', digits[byte >> 4], digits[byte & 0x0F] };
    }
    return result;
}

bool isASCII(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool hasInternetHost(std::string const& scheme)
{
    constexpr std::string_view schemes[] = { "http", "https", "ftp", "ws", "wss", "file" };
    return std::find(std::begin(schemes), std::end(schemes), scheme) != std::end(schemes);
}

} // namespace

std::optional<std::string> URLParser::parse()
{
    if (m_rest.empty() || !takeScheme() || !takeAuthority())
        return std::nullopt;
    m_result += percentEncodedPath(takeUntil("?#"), ValidEscapes::Kept);
    if (m_rest.starts_with('?')) {
        m_rest.remove_prefix(1);
        m_result += '?' + encoded(takeUntil("#"), queryCharacters);
    }
    if (m_rest.starts_with('#'))
        m_result += '#' + encoded(m_rest.substr(1), queryCharacters);
    return std::move(m_result);
}

bool URLParser::takeScheme()
{
    auto const colon = m_rest.find_first_of(":/?#");
    if (colon == std::string_view::npos || m_rest[colon] != ':')
        return true;
    auto const scheme = m_rest.substr(0, colon);
    bool const isScheme = !scheme.empty() && isLetter(scheme[0])
        && std::all_of(
            scheme.begin(), scheme.end(), [](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "+-."); });
    if (!isScheme) {
        // "1http://x" is a path that happens to have a colon; " http://x" is an address with something before it.
        return encoded(scheme, pathCharacters) == scheme;
    }
    m_scheme = asciiLowerCase(scheme);
    m_result.append(scheme) += ':';
    m_rest.remove_prefix(colon + 1);
    return true;
}

bool URLParser::takeAuthority()
{
    if (!m_rest.starts_with("//"))
        return true;
    m_rest.remove_prefix(2);
    m_result += "//";
    auto const authority = takeUntil("/?#");
    auto const at = authority.rfind('@');
    if (at == std::string_view::npos)
        return takeHostAndPort(authority);
    m_result += encoded(authority.substr(0, at), userCharacters) + '@';
    return takeHostAndPort(authority.substr(at + 1));
}

bool URLParser::takeHostAndPort(std::string_view hostAndPort)
{
    if (!hostAndPort.starts_with('[')) {
        auto const colon = std::min(hostAndPort.find(':'), hostAndPort.size());
        return takeHost(hostAndPort.substr(0, colon)) && takePort(hostAndPort.substr(colon));
    }
    auto const end = hostAndPort.find(']');
    return end != std::string_view::npos && takeAddressLiteral(hostAndPort.substr(1, end - 1))
        && takePort(hostAndPort.substr(end + 1));
}

bool URLParser::takeHost(std::string_view host)
{
    if (host.find_first_of(" []") != std::string_view::npos)
        return false;
    if (!hasInternetHost(m_scheme)) {
        m_result += encoded(host, {});
        return true;
    }
    // A name server knows none of these, and encoded they would be another host.
    bool const isForbidden = std::any_of(host.begin(), host.end(),
        [](char c) { return (static_cast<unsigned char>(c) < 0x80 && c != '%' && !isAllowed(c, {})); });
    if (isForbidden)
        return false;
    auto const name = isASCII(host) ? std::string(host) : asciiHost(host);
    if (!name)
        return false;
    m_result += encoded(*name, {});
    return true;
}

// An address of RFC 3986, section 3.2.2, with the zone of RFC 6874: "fe80::1%25eth0". A bare "%" before the zone is
// what people write and gets its escape.
bool URLParser::takeAddressLiteral(std::string_view literal)
{
    auto const percent = std::min(literal.find('%'), literal.size());
    auto const address = literal.substr(0, percent);
    auto const isAddressCharacter = [](char c) { return hexDigitValue(c).has_value() || isOneOf(c, ":."); };
    bool const isFuture = address.starts_with('v') || address.starts_with('V');
    bool const isSound = std::all_of(
        address.begin(), address.end(), [&](char c) { return isFuture ? isAllowed(c, ":") : isAddressCharacter(c); });
    if (address.empty() || !isSound)
        return false;
    m_result.append("[").append(address);
    if (percent < literal.size()) {
        auto zone = literal.substr(percent + 1);
        if (zone.starts_with("25"))
            zone.remove_prefix(2);
        m_result += "%25" + encoded(zone, {});
    }
    m_result += ']';
    return true;
}

// Empty, or a colon and digits, which may be none.
bool URLParser::takePort(std::string_view port)
{
    if (port.empty())
        return true;
    auto const digits = port.substr(1);
    if (port[0] != ':' || !std::all_of(digits.begin(), digits.end(), isDigit))
        return false;
    m_result += port;
    return true;
}

std::string_view URLParser::takeUntil(char const* delimiters)
{
    auto const end = std::min(m_rest.find_first_of(delimiters), m_rest.size());
    auto const part = m_rest.substr(0, end);
    m_rest.remove_prefix(end);
    return part;
}

std::string percentEncodedPath(std::string_view path, ValidEscapes escapes)
{
    return encoded(path, pathCharacters, escapes);
}

std::string percentDecoded(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isEscape(text, i)) {
            result += text[i];
            continue;
        }
        result += static_cast<char>(
            static_cast<unsigned char>(*hexDigitValue(text[i + 1]) * 16 + *hexDigitValue(text[i + 2])));
        i += 2;
    }
    return result;
}

} // namespace platform
