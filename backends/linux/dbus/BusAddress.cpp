#include "backends/linux/dbus/BusAddress.h"

#include <charconv>
#include <functional>
#include <string_view>

namespace backends {

namespace {

void forEachPart(std::string_view text, char separator, std::function<void(std::string_view)> const& handle)
{
    while (true) {
        auto const end = text.find(separator);
        handle(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

// Bytes may be written as "%" and two hexadecimal digits.
std::string unescaped(std::string_view text)
{
    constexpr std::size_t escapeLength = 3;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        int byte = 0;
        auto const* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + escapeLength <= text.size()
            && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            bytes.push_back(static_cast<char>(byte));
            i += 2;
        } else {
            bytes.push_back(text[i]);
        }
    }
    return bytes;
}

} // namespace

std::optional<std::string> socketPath(std::string const& address)
{
    constexpr std::string_view transport = "unix:", key = "path=";
    std::optional<std::string> path;
    forEachPart(address, ';', [&](std::string_view entry) {
        if (path || !entry.starts_with(transport))
            return;
        forEachPart(entry.substr(transport.size()), ',', [&](std::string_view pair) {
            if (!path && pair.starts_with(key))
                path = unescaped(pair.substr(key.size()));
        });
    });
    return path;
}

std::string withoutIdentity(std::string const& address)
{
    std::string plain;
    forEachPart(address, ';', [&](std::string_view entry) {
        if (!plain.empty())
            plain += ';';
        auto const keys = entry.find(':');
        if (keys == std::string_view::npos) {
            plain += entry;
            return;
        }
        plain += entry.substr(0, keys);
        char separator = ':';
        forEachPart(entry.substr(keys + 1), ',', [&](std::string_view pair) {
            if (pair.starts_with("guid="))
                return;
            plain += separator;
            plain += pair;
            separator = ',';
        });
    });
    return plain;
}

} // namespace backends
