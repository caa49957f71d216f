#include "backends/linux/host/FileFacts.h"

#include "backends/linux/host/Descriptor.h"
#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/Text.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <memory>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>

namespace backends {

namespace {

constexpr auto volumesByUUID = "/dev/disk/by-uuid";

// A handle has its bytes behind it.
struct HandleBuffer {
    alignas(file_handle) unsigned char bytes[sizeof(file_handle) + MAX_HANDLE_SZ] {};
    file_handle* handle() { return reinterpret_cast<file_handle*>(bytes); }
};

// Programs that serve file systems (FUSE) count their handles anew whenever they start.
bool hasLastingHandles(int file)
{
    struct statfs found { };
    return fstatfs(file, &found) == 0 && found.f_type != FUSE_SUPER_MAGIC;
}

void readHandle(int file, FileIdentity& identity)
{
    HandleBuffer buffer;
    buffer.handle()->handle_bytes = MAX_HANDLE_SZ;
    int mount = 0;
    if (!hasLastingHandles(file) || name_to_handle_at(file, "", buffer.handle(), &mount, AT_EMPTY_PATH) != 0)
        return;
    identity.handleType = buffer.handle()->handle_type;
    auto const* const start = buffer.bytes + sizeof(file_handle);
    identity.handle.assign(start, start + buffer.handle()->handle_bytes);
}

// Spaces and the like are written as their octal numbers.
std::string unescaped(std::string const& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const isOctal = [&](std::size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '7'; };
        if (text[i] == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3)) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

std::string uuidOf(std::string const& device)
{
    std::unique_ptr<DIR, int (*)(DIR*)> const folder(opendir(volumesByUUID), closedir);
    while (folder) {
        auto const* const entry = readdir(folder.get());
        if (!entry)
            break;
        struct stat facts { };
        if (stat((std::string(volumesByUUID) + "/" + entry->d_name).c_str(), &facts) != 0 || !S_ISBLK(facts.st_mode))
            continue;
        if (std::to_string(major(facts.st_rdev)) + ":" + std::to_string(minor(facts.st_rdev)) == device)
            return entry->d_name;
    }
    return {};
}

// Kernels from 6.9 on tell it themselves (FS_IOC_GETFSUUID), where nobody keeps the links.
std::string uuidFromKernel(std::string const& folder)
{
    struct Answer {
        std::uint8_t length;
        std::uint8_t bytes[16];
    } answer {};
    constexpr auto question = _IOR(0x15, 0, Answer);
    Descriptor const descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (ioctl(descriptor.number(), question, &answer) != 0 || answer.length != sizeof answer.bytes)
        return {};
    constexpr auto digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < sizeof answer.bytes; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[answer.bytes[i] >> 4];
        text += digits[answer.bytes[i] & 0xF];
    }
    return text;
}

} // namespace

std::optional<FileFacts> factsOf(std::string const& path, LastLink lastLink)
{
    // Everything is asked of one descriptor, so that it is said of one file, whatever is renamed meanwhile.
    int const flags = lastLink == LastLink::Follow ? 0 : O_NOFOLLOW;
    Descriptor const file(open(path.c_str(), O_PATH | O_CLOEXEC | flags));
    struct statx found { };
    // What a remote file system remembers is good enough, and does not wait.
    if (!file
        || statx(file.number(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID,
               &found)
            != 0)
        return std::nullopt;
    FileFacts facts;
    facts.identity.inode = found.stx_ino;
    if (found.stx_mask & STATX_BTIME)
        facts.identity.birth = found.stx_btime.tv_sec * 1'000'000'000 + found.stx_btime.tv_nsec;
    facts.isFolder = S_ISDIR(found.stx_mode);
    facts.mount = found.stx_mnt_id;
    readHandle(file.number(), facts.identity);
    return facts;
}

std::vector<Mount> mountsIn(std::string const& mountInfo)
{
    std::vector<Mount> mounts;
    for (auto const line : platform::split(mountInfo, '\n')) {
        std::istringstream fields(std::string { line });
        Mount mount;
        std::string field;
        fields >> mount.id >> field >> mount.device >> mount.root >> mount.point;
        // A number of optional fields ends with a dash.
        while (fields >> field && field != "-") { }
        if (!(fields >> mount.type))
            continue;
        mount.root = unescaped(mount.root);
        mount.point = unescaped(mount.point);
        mounts.push_back(std::move(mount));
    }
    return mounts;
}

std::vector<Mount> presentMounts()
{
    auto const text = readFile("/proc/self/mountinfo");
    return text ? mountsIn(text.value()) : std::vector<Mount> {};
}

VolumeIdentity volumeOf(Mount const& mount)
{
    VolumeIdentity volume;
    volume.type = mount.type;
    volume.uuid = uuidOf(mount.device);
    // The parts of one of these share it; the number below tells them apart.
    if (volume.uuid.empty() && mount.type != "btrfs")
        volume.uuid = uuidFromKernel(mount.point);
    struct statfs found { };
    if (statfs(mount.point.c_str(), &found) == 0) {
        static_assert(sizeof found.f_fsid == sizeof volume.number);
        std::memcpy(&volume.number, &found.f_fsid, sizeof volume.number);
    }
    return volume;
}

std::optional<std::string> rebased(std::string const& path, std::string const& from, std::string const& to)
{
    auto const without = [](std::string const& folder) { return folder == "/" ? std::string() : folder; };
    auto const base = without(from);
    if (!path.starts_with(base) || (path.size() > base.size() && path[base.size()] != '/'))
        return std::nullopt;
    auto const below = path.substr(base.size());
    auto const moved = without(to) + (below == "/" ? std::string() : below);
    return moved.empty() ? "/" : moved;
}

} // namespace backends
