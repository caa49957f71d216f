#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/foundation/UUID.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace paneweld {

// What the host wants of one brainstorm window. A value: two requests are the same request when all fields are
// equal, and the pipeline drops a repetition by exactly that. Lengths are points.
struct ResizeBrainstormWindow {
    std::string windowIdentifier {};
    std::optional<double> minHeight {};
    std::optional<double> maxHeight {};
    std::optional<double> preferredWidth {};
    std::optional<double> preferredHeight {};
    std::optional<platform::UUID> preferredSizeID {}; // present when a width or a height is wanted
    bool isAnimated = false;

    bool operator==(ResizeBrainstormWindow const&) const = default;
};

// The sizes that a request leads to, worked out from numbers alone.
struct ResizeGeometry {
    platform::Size minSize;
    platform::Size maxSize;
    // Inside the limits; where they cross the minimum wins.
    platform::Size target;

    static ResizeGeometry resolve(ResizeBrainstormWindow const& request, platform::Rect const& frame);

    // Whether the frame is so near the target that moving it would only make it tremble.
    bool isReached(platform::Rect const& frame) const;
    // The bottom edge and the horizontal centre stay; no frame is lower than 44 points, whatever the target says.
    platform::Rect targetFrame(platform::Rect const& frame) const;
};

} // namespace paneweld

template<>
struct std::hash<paneweld::ResizeBrainstormWindow> {
    std::size_t operator()(paneweld::ResizeBrainstormWindow const& value) const noexcept;
};
