#include "backends/linux/host/FileSystem.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pwd.h>
#include <sstream>
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

platform::Result<std::string> readFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return platform::NSError { "NSPOSIXErrorDomain", errno, std::strerror(errno) };
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

} // namespace backends
