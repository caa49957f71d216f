#include "backends/linux/host/BookmarkData.h"

#include <cstdint>

// What is accepted is written back as the same bytes, so that there is one form only. Bytes are mostly refused for
// their check sum, so they are also taken as what a bookmark holds.
static void check(platform::Data const& data)
{
    auto const bookmark = backends::decodeBookmark(data);
    if (bookmark && backends::encodeBookmark(bookmark.value()) != data)
        __builtin_trap();
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    check({ { data, data + size } });
    check(backends::sealBookmark({ data, data + size }));
    return 0;
}
