#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/Value.h"

#include <cstdint>

namespace platform {

enum class BookmarkResolutionOptions : std::uint64_t { WithSecurityScope = 0x400 };

// Turns stored bookmark data back into the folder that the user once granted, and opens and ends its scope.
class Bookmarks {
public:
    virtual ~Bookmarks() = default;

    virtual Result<URL> resolve(Data const& bookmark, BookmarkResolutionOptions options) = 0;
    virtual bool startAccessingSecurityScopedResource(URL const& url) = 0;
    virtual void stopAccessingSecurityScopedResource(URL const& url) = 0;
};

} // namespace platform
