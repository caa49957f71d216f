#include "backends/linux/host/FileSystem.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <pwd.h>
#include <sys/stat.h>
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
    // In one piece and without a stream between: some are read on the way to the first picture on the screen.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file)
        return platform::NSError { "NSPOSIXErrorDomain", errno, std::strerror(errno) };
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    struct stat status { };
    // What the kernel makes up has no size before it is read.
    constexpr std::size_t leastPiece = 4096;
    auto piece = leastPiece;
    if (fstat(fileno(file.get()), &status) == 0 && status.st_size > 0)
        piece = static_cast<std::size_t>(status.st_size) + 1;
    std::string bytes;
    while (true) {
        auto const before = bytes.size();
        bytes.resize(before + piece);
        auto const count = std::fread(&bytes[before], 1, piece, file.get());
        bytes.resize(before + count);
        if (count < piece)
            break;
    }
    if (std::ferror(file.get()))
        return platform::NSError { "NSPOSIXErrorDomain", errno, std::strerror(errno) };
    return bytes;
}

} // namespace backends
