#include "backends/linux/host/KeptValues.h"

#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/JSON.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace backends {

KeptValues::KeptValues(std::string path)
    : m_path(std::move(path))
{
    auto const bytes = readFile(m_path);
    auto const object = bytes ? platform::JSONObject::scan(bytes.value()) : std::nullopt;
    if (!object)
        return;
    // Every key is known by name, so that a file that somebody else filled costs nothing.
    for (auto const* key : { "SULastCheckTime", "SUHasLaunchedBefore", "SUEnableAutomaticChecks",
             "SUAutomaticallyUpdate", "SUScheduledCheckInterval", "SUSkippedVersion", "SUSkippedMajorVersion",
             "SUUpdateGroupIdentifier", "SULastFeedDate" }) {
        if (auto value = object->string(key))
            m_values.emplace(key, std::move(*value));
    }
}

std::optional<std::string> KeptValues::text(std::string const& key) const
{
    auto const found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional(found->second);
}

void KeptValues::set(std::string const& key, std::string const& value)
{
    if (value.empty())
        m_values.erase(key);
    else
        m_values[key] = value;
    write();
}

void KeptValues::write() const
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(m_path).parent_path(), error);
    auto const anew = m_path + ".new";
    std::ofstream file(anew, std::ios::binary | std::ios::trunc);
    file << platform::jsonObjectText(m_values);
    file.close();
    if (file)
        std::filesystem::rename(anew, m_path, error);
}

std::string KeptValues::pathFor(std::string const& bundleIdentifier, std::string const& fileName)
{
    auto const* const config = std::getenv("XDG_CONFIG_HOME");
    std::string folder = config && *config == '/' ? config : "";
    if (folder.empty())
        folder = FileSystem().homeDirectoryForCurrentUser().filePath().value_or("") + "/.config";
    return folder + "/" + bundleIdentifier + "/" + fileName;
}

} // namespace backends
