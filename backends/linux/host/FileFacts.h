#pragma once

#include "backends/linux/host/BookmarkData.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// What the kernel says of a file, as far as it helps to know the file again.
struct FileFacts {
    FileIdentity identity {};
    bool isFolder = false;
    // Of the mount that the path goes through, as in /proc/self/mountinfo.
    std::uint64_t mount = 0;
};
enum class LastLink { Follow, Keep };
// Absent when there is no such file.
std::optional<FileFacts> factsOf(std::string const& path, LastLink lastLink);

// A line of /proc/self/mountinfo (proc(5)).
struct Mount {
    std::uint64_t id = 0;
    // "254:0".
    std::string device {};
    // What of the file system is mounted, and where.
    std::string root {};
    std::string point {};
    std::string type {};
};
std::vector<Mount> mountsIn(std::string const& mountInfo);
std::vector<Mount> presentMounts();

// The file system behind a mount. Asks the file system, which may take its time when it is on a network.
VolumeIdentity volumeOf(Mount const& mount);

// A path below one folder as a path below another; absent when it is not below it.
std::optional<std::string> rebased(std::string const& path, std::string const& from, std::string const& to);

} // namespace backends
