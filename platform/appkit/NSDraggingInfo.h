#pragma once

#include <cstdint>

namespace platform {

class NSPasteboard;

enum class NSDragOperation : std::uint64_t { None = 0, Copy = 1 };

// A drag that is over a view. Main thread only.
class NSDraggingInfo {
public:
    virtual ~NSDraggingInfo() = default;
    // All that is dragged is there when the drop is performed.
    virtual NSPasteboard& draggingPasteboard() = 0;
};

} // namespace platform
