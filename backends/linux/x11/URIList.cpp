#include "backends/linux/x11/URIList.h"

#include "platform/foundation/Text.h"

#include <algorithm>

namespace backends {

using platform::URL;

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view fileScheme = "file";

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// The length of the scheme before its colon (RFC 3986, section 3.1); 0 when there is none.
std::size_t schemeLength(std::string_view text)
{
    auto const isSchemeCharacter
        = [](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; };
    if (text.empty() || !isLetter(text[0]))
        return 0;
    auto const end = std::find_if_not(text.begin(), text.end(), isSchemeCharacter);
    return end != text.end() && *end == ':' ? static_cast<std::size_t>(end - text.begin()) : 0;
}

// Bytes in another encoding stand for themselves: a file's name is bytes, not text.
std::string withForeignBytesEscaped(std::string_view bytes)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        if (auto const character = platform::decodeUTF8(bytes, i)) {
            text += bytes.substr(i, character->length);
            i += character->length;
            continue;
        }
        auto const byte = static_cast<unsigned char>(bytes[i++]);
        text += { '%', digits[byte >> 4], digits[byte & 15] };
    }
    return text;
}

// What follows "file:", as an address of this machine's file; of another machine's it stays as it is. Absent without an
// absolute path.
std::optional<std::string> fileAddress(std::string_view rest, std::string_view ownHost)
{
    std::string_view host;
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        host = rest.substr(0, rest.find('/'));
        rest.remove_prefix(host.size());
    }
    if (!rest.starts_with('/'))
        return std::nullopt;
    auto const name = platform::asciiLowerCase(host);
    bool const isOurs = name == "localhost" || name == platform::asciiLowerCase(ownHost);
    return "file://" + std::string(isOurs ? std::string_view() : host) + std::string(rest);
}

std::optional<URL> urlFromLine(std::string_view line, std::string_view ownHost)
{
    if (line.starts_with('/'))
        return URL::fileURL(line, URL::IsDirectory::No);
    line = platform::trimmed(line, blanks);
    auto const scheme = schemeLength(line);
    // "mailto:" leads nowhere.
    if (scheme == 0 || scheme + 1 == line.size())
        return std::nullopt;
    auto const text = withForeignBytesEscaped(line);
    if (platform::asciiLowerCase(text.substr(0, scheme)) != fileScheme)
        return URL::fromString(text);
    auto const file = fileAddress(std::string_view(text).substr(scheme + 1), ownHost);
    return file ? URL::fromString(*file) : std::nullopt;
}

void append(std::vector<URL>& urls, std::string_view line, std::string_view ownHost)
{
    if (auto url = urlFromLine(line, ownHost))
        urls.push_back(std::move(*url));
}

// Absent for bytes that are meant to be read as bytes.
std::optional<platform::ByteOrder> byteOrderOf(std::string_view bytes)
{
    if (bytes.size() < 2)
        return std::nullopt;
    // Without a mark the first character tells: it belongs to a scheme, which is ASCII.
    auto const start = bytes.substr(0, 2);
    if (start == "\xFF\xFE" || (start[0] != '\0' && start[1] == '\0'))
        return platform::ByteOrder::LittleEndian;
    if (start == "\xFE\xFF" || (start[0] == '\0' && start[1] != '\0'))
        return platform::ByteOrder::BigEndian;
    return std::nullopt;
}

} // namespace

std::vector<URL> urlsFromURIList(std::string_view bytes, std::string_view ownHost)
{
    constexpr std::string_view lineEnds("\r\n\0", 3);
    std::vector<URL> urls;
    while (!bytes.empty()) {
        auto const line = bytes.substr(0, bytes.find_first_of(lineEnds));
        bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
        append(urls, line, ownHost);
    }
    return urls;
}

std::vector<URL> urlsFromNetscapeURL(std::string_view bytes, std::string_view ownHost)
{
    constexpr std::string_view lineEnds("\r\0", 2);
    std::vector<URL> urls;
    // Empty lines count: a title may be empty.
    for (bool isAddress = true; !bytes.empty(); isAddress = !isAddress) {
        auto const line = bytes.substr(0, bytes.find('\n'));
        bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
        if (isAddress)
            append(urls, line.substr(0, line.find_first_of(lineEnds)), ownHost);
    }
    return urls;
}

std::optional<std::vector<URL>> urlsFromMozURL(std::string_view bytes, std::string_view ownHost)
{
    auto const order = byteOrderOf(bytes);
    if (!order)
        return urlsFromNetscapeURL(bytes, ownHost);
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        bytes.remove_prefix(2);
    auto const text = platform::textFromUTF16(bytes, *order, platform::LoneSurrogates::Refused);
    if (!text)
        return std::nullopt;
    return urlsFromNetscapeURL(*text, ownHost);
}

} // namespace backends
