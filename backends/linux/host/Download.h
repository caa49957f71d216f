#pragma once

#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSError.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace backends {

// What is to be fetched from the web, and how much of it at most.
struct Download {
    std::string url {};
    // How the program calls itself.
    std::string userAgent {};
    // Bytes. More than that ends the download.
    std::uint64_t maximum = 0;
    // Bytes, where somebody promised a number: exactly so many have to come.
    std::optional<std::uint64_t> length {};
    // A server that says next to nothing for so long has gone.
    platform::Seconds stallTime { 30 };
    // For the whole of it; absent: as long as it takes.
    std::optional<platform::Seconds> deadline {};
    // Set from any thread to end it.
    std::atomic<bool> const* isCancelled = nullptr;
    // Between 0 and 1, at each hundredth of the way, but not more often than twice a second: desktops draw each, and
    // more than the eye can follow is a burden to them. Only with a known length.
    std::function<void(double)> progress {};
};

// Fetches over http or https (RFC 9110). Redirects are followed five times, and never from https to anything less. The
// sink takes the bytes in order; false ends the download. Blocks; any thread. Absent when all has come; the code of the
// error is updateCancelled after a cancellation. The library that fetches is loaded with the first download.
std::optional<platform::NSError> fetch(Download const& download, std::function<bool(std::string_view)> const& sink);

} // namespace backends
