#pragma once

namespace platform {

// A colour of four parts from 0 to 1.
struct NSColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static NSColor clearColor() { return { 0, 0, 0, 0 }; }

    bool operator==(NSColor const&) const = default;
};

} // namespace platform
