#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

// An address as text (RFC 3986). Nothing is normalised: no case folding, no "..", no added slash.
class URL {
public:
    enum class IsDirectory { No, Yes };

    // The lenient reader: characters that may not stand where they stand are percent-encoded (UTF-8, upper-case
    // hex), valid escapes are kept, a non-ASCII host of a web address becomes its ASCII form (IDNA). Absent for the
    // empty text and for what no encoding can mend: a bad port, a space in a host, text around an IP literal.
    static std::optional<URL> fromString(std::string_view text);

    // "file://" and the encoded path, which is taken from the root; a directory ends with a slash. The file system is
    // not asked.
    static URL fileURL(std::string_view path, IsDirectory isDirectory);

    std::string const& absoluteString() const { return m_text; }
    bool isFileURL() const;
    // The decoded path of a file URL, without the slash at the end of a directory; absent for every other address and
    // for a path with an encoded NUL.
    std::optional<std::string> filePath() const;

    bool operator==(URL const&) const = default;

private:
    explicit URL(std::string text)
        : m_text(std::move(text))
    {
    }

    std::string m_text;
};

} // namespace platform
