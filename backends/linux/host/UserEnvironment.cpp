#include "backends/linux/host/UserEnvironment.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace backends {

namespace {

constexpr std::string_view keptSuffix = "_ORIG";
constexpr std::string_view systemPath = "/usr/local/bin:/usr/bin:/bin";

bool isInside(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::vector<std::string_view> foldersIn(std::string_view list)
{
    std::vector<std::string_view> folders;
    while (true) {
        auto const end = std::min(list.find(':'), list.size());
        folders.push_back(list.substr(0, end));
        if (end == list.size())
            return folders;
        list.remove_prefix(end + 1);
    }
}

std::string withoutFoldersInside(std::string_view list, std::string_view folder)
{
    std::string left;
    for (auto const entry : foldersIn(list)) {
        if (!isInside(entry, folder))
            left += (left.empty() ? "" : ":") + std::string(entry);
    }
    return left;
}

void leaveBundle(std::map<std::string, std::string>& values)
{
    auto const bundled = values;
    auto folder = values["APPDIR"];
    while (folder.ends_with('/'))
        folder.pop_back();
    for (auto const& [name, value] : bundled) {
        bool const isKept = bundled.contains(name + std::string(keptSuffix));
        if (!isKept && !folder.empty() && value.find(folder) != std::string::npos) {
            auto const left = withoutFoldersInside(value, folder);
            if (left.empty())
                values.erase(name);
            else
                values[name] = left;
        }
        if (!name.ends_with(keptSuffix))
            continue;
        values[name.substr(0, name.size() - keptSuffix.size())] = value;
        values.erase(name);
    }
    // Without a kept value these were not set before the bundle set them.
    for (auto const* name : { "LD_LIBRARY_PATH", "LD_PRELOAD" }) {
        if (!bundled.contains(std::string(name) + std::string(keptSuffix)))
            values.erase(name);
    }
    for (auto const* name : { "APPDIR", "APPIMAGE", "ARGV0", "OWD" })
        values.erase(name);
}

} // namespace

std::vector<std::string> environmentOfUser(char const* const* environment)
{
    std::map<std::string, std::string> values;
    for (auto entry = environment; *entry; ++entry) {
        std::string_view const text(*entry);
        auto const end = std::min(text.find('='), text.size());
        values[std::string(text.substr(0, end))] = text.substr(std::min(end + 1, text.size()));
    }
    if (values.contains("APPDIR"))
        leaveBundle(values);
    std::vector<std::string> entries;
    for (auto const& [name, value] : values) {
        if (!value.empty() || !name.starts_with("LD_"))
            entries.push_back(name + "=" + value);
    }
    return entries;
}

std::string pathOfProgram(std::string const& name, std::vector<std::string> const& environment)
{
    if (name.find('/') != std::string::npos)
        return name;
    std::string_view folders = systemPath;
    for (std::string_view const entry : environment) {
        if (entry.starts_with("PATH="))
            folders = entry.substr(entry.find('=') + 1);
    }
    for (auto const folder : foldersIn(folders)) {
        auto path = std::string(folder.empty() ? "." : folder) + "/" + name;
        struct stat facts { };
        if (access(path.c_str(), X_OK) == 0 && stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode))
            return path;
    }
    return {};
}

} // namespace backends
