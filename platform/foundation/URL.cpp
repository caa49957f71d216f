#include "platform/foundation/URL.h"

#include "platform/foundation/Text.h"
#include "platform/foundation/URLParser.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::string_view filePrefix = "file:";

} // namespace

std::optional<URL> URL::fromString(std::string_view text)
{
    auto address = URLParser(text).parse();
    return address ? std::optional<URL>(URL(std::move(*address))) : std::nullopt;
}

URL URL::fileURL(std::string_view path, IsDirectory isDirectory)
{
    auto text = "file://" + std::string(path.starts_with('/') ? "" : "/");
    text += percentEncodedPath(path, ValidEscapes::Encoded);
    if (isDirectory == IsDirectory::Yes && !text.ends_with('/'))
        text += '/';
    return URL(std::move(text));
}

bool URL::isFileURL() const { return asciiLowerCase(m_text.substr(0, filePrefix.size())) == filePrefix; }

std::optional<std::string> URL::filePath() const
{
    if (!isFileURL())
        return std::nullopt;
    auto rest = std::string_view(m_text).substr(filePrefix.size());
    rest = rest.substr(0, rest.find_first_of("?#"));
    if (rest.starts_with("//"))
        rest.remove_prefix(std::min(rest.find('/', 2), rest.size()));
    auto path = percentDecoded(rest);
    if (path.find('\0') != std::string::npos)
        return std::nullopt;
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

} // namespace platform
