#include "backends/linux/host/FileSystem.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace backends {

namespace {

std::string homeFromUserDatabase()
{
    constexpr std::size_t usualRecord = 16384;
    std::vector<char> buffer(usualRecord);
    passwd record {};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir)
        return "/";
    return found->pw_dir;
}

} // namespace

platform::URL FileSystem::homeDirectoryForCurrentUser() const
{
    char const* home = std::getenv("HOME");
    auto const path = home && *home == '/' ? std::string(home) : homeFromUserDatabase();
    return platform::URL::fileURL(path, platform::URL::IsDirectory::Yes);
}

bool FileSystem::isReadableFile(std::string const& path) const
{
    // The effective user is who would open it.
    return eaccess(path.c_str(), R_OK) == 0;
}

} // namespace backends
