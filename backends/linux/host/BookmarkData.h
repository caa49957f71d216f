#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace backends {

// What tells a file from every other one on its file system, one that gets its number later included. A value.
struct FileIdentity {
    std::uint64_t inode = 0;
    // When it was made, in nanoseconds since 1970; 0 where the file system does not keep it.
    std::int64_t birth = 0;
    // The handle that a file server would know it by (name_to_handle_at(2)), which holds the number's generation. Type
    // 0 and empty where there is none.
    std::int32_t handleType = 0;
    std::vector<std::uint8_t> handle {};

    bool isSameAs(FileIdentity const& other) const;
    bool operator==(FileIdentity const&) const = default;
};

// A file system, told from others across mounts and restarts. A value.
struct VolumeIdentity {
    // As in /proc/self/mountinfo: "ext4".
    std::string type {};
    // As under /dev/disk/by-uuid; empty where there is none.
    std::string uuid {};
    // As in statfs(2). Some file systems make it up from the device, which may have another number later.
    std::uint64_t number = 0;

    bool isSameAs(VolumeIdentity const& other) const;
    bool operator==(VolumeIdentity const&) const = default;
};

// What is kept of a folder, to find it again. A value.
struct BookmarkData {
    // One folder on the way from the root to it, and it itself at last.
    struct Step {
        std::string name {};
        FileIdentity identity {};
        bool operator==(Step const&) const = default;
    };

    // As it was granted, possibly through symbolic links.
    std::string path {};
    // The way without links; empty for the root itself.
    std::vector<Step> steps {};
    VolumeIdentity volume {};
    // From the root of the file system, which need not be what is mounted of it.
    std::string pathInVolume {};

    bool operator==(BookmarkData const&) const = default;
};

platform::Data encodeBookmark(BookmarkData const& bookmark);
// The body of a bookmark with its mark, version and check sum around it.
platform::Data sealBookmark(std::vector<std::uint8_t> const& body);
// Fails for bytes that are malformed, cut short, changed or of another version. What it reads is written back as the
// same bytes.
platform::Result<BookmarkData> decodeBookmark(platform::Data const& data);

} // namespace backends
