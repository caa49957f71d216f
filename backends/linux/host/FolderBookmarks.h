#pragma once

#include "platform/foundation/Bookmark.h"

namespace backends {

// Bookmarks of this machine's files. A file is known by its file system, its number there and the time when it was
// made, so it is found again after a restart, on another mount point, and after it or a folder above it was renamed
// where it is. What was moved into another folder is refused. There is no secret in a bookmark: it is good for what the
// process may read anyway.
class FolderBookmarks : public platform::Bookmarks {
public:
    platform::Result<platform::Data> bookmarkData(
        platform::URL const& url, platform::BookmarkCreationOptions options) override;
    platform::Result<platform::URL> resolve(
        platform::Data const& bookmark, platform::BookmarkResolutionOptions options) override;
    // Whether the process may read it now: there is nothing else to a scope here.
    bool startAccessingSecurityScopedResource(platform::URL const& url) override;
    void stopAccessingSecurityScopedResource(platform::URL const& url) override;
};

} // namespace backends
