#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/Value.h"

#include <cstdint>

namespace platform {

enum class BookmarkCreationOptions : std::uint64_t { WithSecurityScope = 0x800 };
enum class BookmarkResolutionOptions : std::uint64_t { WithSecurityScope = 0x400 };

// Turns a folder or file that the user once granted into data that an app can keep, and that data back into where the
// folder is now; opens and ends its scope. Main thread only.
class Bookmarks {
public:
    virtual ~Bookmarks() = default;

    // Fails for what is not there and for what is no file.
    virtual Result<Data> bookmarkData(URL const& url, BookmarkCreationOptions options) = 0;
    // The same folder, wherever it is found now, or an error: never another one that took its place.
    virtual Result<URL> resolve(Data const& bookmark, BookmarkResolutionOptions options) = 0;
    virtual bool startAccessingSecurityScopedResource(URL const& url) = 0;
    virtual void stopAccessingSecurityScopedResource(URL const& url) = 0;
};

} // namespace platform
