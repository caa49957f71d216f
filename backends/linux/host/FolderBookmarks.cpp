#include "backends/linux/host/FolderBookmarks.h"

#include "backends/linux/host/BookmarkData.h"
#include "backends/linux/host/FileFacts.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

namespace backends {

using platform::Data;
using platform::NSError;
using platform::Result;
using platform::URL;

namespace {

constexpr int mostEntries = 100'000;

using Steps = std::span<BookmarkData::Step const>;

struct Place {
    std::string path {};
    bool isFolder = false;
};

std::string childOf(std::string const& folder, std::string const& name)
{
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

Mount const* mountWithID(std::vector<Mount> const& mounts, std::uint64_t id)
{
    auto const found = std::find_if(mounts.begin(), mounts.end(), [&](auto const& mount) { return mount.id == id; });
    return found == mounts.end() ? nullptr : &*found;
}

// The name that the file has now in a folder, if it is there.
std::optional<std::string> nameIn(std::string const& folder, FileIdentity const& identity)
{
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(opendir(folder.c_str()), closedir);
    for (int i = 0; entries && i < mostEntries; ++i) {
        auto const* const entry = readdir(entries.get());
        if (!entry)
            break;
        // Asking only of those that can be it keeps a large folder cheap.
        if (entry->d_ino != identity.inode)
            continue;
        auto const facts = factsOf(childOf(folder, entry->d_name), LastLink::Keep);
        if (facts && facts->identity.isSameAs(identity))
            return entry->d_name;
    }
    return std::nullopt;
}

// One look for a bookmark's file.
class Search {
public:
    explicit Search(BookmarkData const& bookmark)
        : m_bookmark(bookmark)
        , m_mounts(presentMounts())
    {
    }

    std::optional<Place> find() const
    {
        if (auto place = check(m_bookmark.path))
            return place;
        if (auto place = walk("/", m_bookmark.steps))
            return place;
        for (auto const& mount : m_mounts) {
            if (mount.type != m_bookmark.volume.type || !m_bookmark.volume.isSameAs(volumeOf(mount)))
                continue;
            auto const path = rebased(m_bookmark.pathInVolume, mount.root, mount.point);
            if (!path)
                continue;
            if (auto place = check(*path))
                return place;
            if (auto place = walk(mount.point, lastSteps(*path, mount.point)))
                return place;
        }
        return std::nullopt;
    }

private:
    // Those that lead from a mount point to the path.
    Steps lastSteps(std::string const& path, std::string const& point) const
    {
        auto const below = point == "/" ? path : path.substr(std::min(point.size(), path.size()));
        auto const count = static_cast<std::size_t>(std::count(below.begin(), below.end(), '/'));
        Steps const steps(m_bookmark.steps);
        return steps.last(std::min(count, steps.size()));
    }

    // Follows the files themselves, under whatever names they have now. A folder on the way may be another one: what
    // counts is what is at the end.
    std::optional<Place> walk(std::string path, Steps steps) const
    {
        for (auto const& step : steps) {
            auto const facts = factsOf(childOf(path, step.name), LastLink::Keep);
            bool const isIt = facts && facts->identity.isSameAs(step.identity);
            auto const name = isIt ? step.name : nameIn(path, step.identity).value_or(step.name);
            path = childOf(path, name);
        }
        return check(path);
    }

    // Absent when something else is there.
    std::optional<Place> check(std::string const& path) const
    {
        auto const facts = factsOf(path, LastLink::Follow);
        if (!facts || (!m_bookmark.steps.empty() && !facts->identity.isSameAs(m_bookmark.steps.back().identity)))
            return std::nullopt;
        auto const* const mount = mountWithID(m_mounts, facts->mount);
        if (!mount || !m_bookmark.volume.isSameAs(volumeOf(*mount)))
            return std::nullopt;
        return Place { path, facts->isFolder };
    }

    BookmarkData const& m_bookmark;
    std::vector<Mount> m_mounts;
};

std::vector<BookmarkData::Step> stepsTo(std::string const& path)
{
    std::vector<BookmarkData::Step> steps;
    for (std::size_t start = 1; start < path.size();) {
        auto const end = std::min(path.find('/', start), path.size());
        auto const facts = factsOf(path.substr(0, end), LastLink::Keep);
        steps.push_back({ path.substr(start, end - start), facts ? facts->identity : FileIdentity {} });
        start = end + 1;
    }
    return steps;
}

NSError error(std::int64_t code, std::string sentence) { return { "Bookmarks", code, std::move(sentence) }; }

} // namespace

Result<Data> FolderBookmarks::bookmarkData(URL const& url, platform::BookmarkCreationOptions)
{
    auto const path = url.filePath();
    if (!path)
        return error(EINVAL, "no file: " + url.absoluteString());
    std::unique_ptr<char, void (*)(void*)> const real(realpath(path->c_str(), nullptr), std::free);
    if (!real)
        return error(errno, *path + ": " + std::strerror(errno));
    auto const facts = factsOf(real.get(), LastLink::Keep);
    auto const mounts = presentMounts();
    auto const* const mount = facts ? mountWithID(mounts, facts->mount) : nullptr;
    if (!mount || !facts->identity.isSameAs(facts->identity))
        return error(ENOTSUP, *path + ": nothing would tell it from another one later");
    BookmarkData bookmark;
    bookmark.path = *path;
    bookmark.steps = stepsTo(real.get());
    bookmark.volume = volumeOf(*mount);
    bookmark.pathInVolume = rebased(real.get(), mount->point, mount->root).value_or("/");
    return encodeBookmark(bookmark);
}

Result<URL> FolderBookmarks::resolve(Data const& data, platform::BookmarkResolutionOptions)
{
    auto const bookmark = decodeBookmark(data);
    if (!bookmark)
        return bookmark.error();
    auto const place = Search(bookmark.value()).find();
    if (!place)
        return error(ENOENT, "not found any more: " + bookmark.value().path);
    return URL::fileURL(place->path, place->isFolder ? URL::IsDirectory::Yes : URL::IsDirectory::No);
}

bool FolderBookmarks::startAccessingSecurityScopedResource(URL const& url)
{
    auto const path = url.filePath();
    auto const facts = path ? factsOf(*path, LastLink::Follow) : std::nullopt;
    return facts && eaccess(path->c_str(), R_OK | (facts->isFolder ? X_OK : 0)) == 0;
}

void FolderBookmarks::stopAccessingSecurityScopedResource(URL const&) { }

} // namespace backends
