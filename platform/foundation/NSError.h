#pragma once

#include <cstdint>
#include <string>

namespace platform {

// An error as a host sees it: who speaks, which of its errors, and a sentence for people.
struct NSError {
    std::string domain;
    std::int64_t code = 0;
    std::string localizedDescription;
    bool operator==(NSError const&) const = default;
};

} // namespace platform
