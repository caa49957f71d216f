#include "backends/linux/host/KdeShortcuts.h"

#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <cstdlib>

namespace backends {

namespace {

constexpr std::string_view fileName = "/kglobalshortcutsrc";
// How a line names its group for people; it holds no keys.
constexpr std::string_view friendlyName = "_k_friendly_name";

// What stands between the commas of a list: in the file, a backslash keeps the meaning of the character behind it, and
// a comma inside a text has one such backslash, itself written as two.
std::string unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            plain += text[i];
            continue;
        }
        switch (char const code = text[++i]) {
        case 't':
            plain += '\t';
            break;
        case 'n':
            plain += '\n';
            break;
        case 'r':
            plain += '\r';
            break;
        case 's':
            plain += ' ';
            break;
        case '\\':
            plain += '\\';
            break;
        default:
            plain += '\\';
            plain += code;
        }
    }
    return plain;
}

std::vector<std::string> fields(std::string_view list)
{
    std::vector<std::string> found(1);
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] == ',') {
            found.emplace_back();
            continue;
        }
        if (list[i] == '\\' && i + 1 < list.size())
            ++i;
        found.back() += list[i];
    }
    return found;
}

std::string_view trimmed(std::string_view text) { return platform::trimmed(text, " \t\r"); }

void appendLine(std::vector<DesktopShortcut>& shortcuts, std::string_view line)
{
    auto const equals = line.find('=');
    if (equals == std::string_view::npos)
        return;
    // A flag in brackets may follow the name ("[$i]": the user may not change it).
    auto const key = trimmed(line.substr(0, equals));
    auto const name = trimmed(key.substr(0, key.find('[')));
    if (name.empty() || name == friendlyName)
        return;
    auto const parts = fields(unescaped(trimmed(line.substr(equals + 1))));
    bool const hasLabel = parts.size() > 2 && !parts[2].empty();
    auto const action = "KDE: " + platform::repairedUTF8(hasLabel ? parts[2] : name);
    for (auto const text : platform::split(parts[0], '\t')) {
        if (auto accelerator = acceleratorFromQt(trimmed(text)))
            shortcuts.push_back({ action, std::move(*accelerator) });
    }
}

std::string configurationFolder()
{
    char const* const folder = std::getenv("XDG_CONFIG_HOME");
    // A relative one counts as none (XDG Base Directory Specification).
    if (folder && *folder == '/')
        return folder;
    char const* const home = std::getenv("HOME");
    return home ? std::string(home) + "/.config" : std::string();
}

} // namespace

std::vector<DesktopShortcut> kdeShortcuts(std::string_view text)
{
    std::vector<DesktopShortcut> shortcuts;
    while (!text.empty()) {
        auto const line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        auto const entry = trimmed(line);
        if (!entry.empty() && entry.front() != '[' && entry.front() != '#')
            appendLine(shortcuts, entry);
    }
    return shortcuts;
}

std::vector<DesktopShortcut> readKdeShortcuts(platform::OSLog const& log)
{
    auto const path = configurationFolder() + std::string(fileName);
    auto const text = readFile(path);
    if (!text) {
        log.info("no shortcuts from KDE: %{private}s: %{public}s", { path, text.error().localizedDescription });
        return {};
    }
    return kdeShortcuts(text.value());
}

} // namespace backends
