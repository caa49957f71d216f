#pragma once

#include "platform/foundation/Geometry.h"

#include <cstdint>

namespace backends {

// A rectangle as the X server counts: pixels from the top left of the root window, y growing downward.
struct PixelRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::int32_t right() const { return x + width; }
    std::int32_t bottom() const { return y + height; }
    std::int32_t middleX() const { return x + width / 2; }
    std::int32_t middleY() const { return y + height / 2; }
    bool contains(std::int32_t pointX, std::int32_t pointY) const
    {
        return pointX >= x && pointX < right() && pointY >= y && pointY < bottom();
    }
    bool hasSizeOf(PixelRect const& other) const { return width == other.width && height == other.height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }

    bool operator==(PixelRect const&) const = default;
};

PixelRect intersectionOf(PixelRect const& first, PixelRect const& second);

// How much of a window's rectangle is shadow and other ornament of its own toolkit (_GTK_FRAME_EXTENTS).
struct PixelInsets {
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t top = 0;
    std::int32_t bottom = 0;

    bool operator==(PixelInsets const&) const = default;
};

PixelRect grownBy(PixelRect const& rect, PixelInsets const& insets);
PixelRect shrunkBy(PixelRect const& rect, PixelInsets const& insets);

// Points and pixels of one desktop: one scale for all monitors, y turned over on the root window's height.
struct PixelScale {
    double factor = 1;
    std::int32_t rootHeight = 0;

    platform::Rect toPoints(PixelRect const& pixels) const;

    // The bottom edge is rounded first and the size afterwards, so that a window that grows at its top never moves its
    // bottom. The width is exact, and its centre is off by no more than half a pixel.
    PixelRect toPixels(platform::Rect const& points) const;
    // The same for a step of a movement: the width gives way by one pixel where that keeps the centre where it will be
    // in the end.
    PixelRect toPixels(platform::Rect const& points, PixelRect const& end) const;

    bool operator==(PixelScale const&) const = default;
};

} // namespace backends
