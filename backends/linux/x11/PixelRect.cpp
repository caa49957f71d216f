#include "backends/linux/x11/PixelRect.h"

#include <algorithm>
#include <cmath>

namespace backends {

namespace {

// Keeps all sums within 32 bits.
constexpr double farthestPixel = 1 << 20;
// On the wire a place has 15 bits and a sign, and servers count a window's end in the same way (X11 protocol, INT16).
// What is cut off there comes out as another number or none. The rest is room for a toolkit's shadows.
constexpr std::int32_t farthestPlace = 32000;

std::int32_t rounded(double value)
{
    return static_cast<std::int32_t>(std::lround(std::clamp(value, -farthestPixel, farthestPixel)));
}

std::int32_t halfDown(std::int32_t value) { return static_cast<std::int32_t>(std::floor(value / 2.0)); }

std::int32_t place(std::int32_t value) { return std::clamp(value, -farthestPlace, farthestPlace); }

std::int32_t length(double value) { return std::clamp(rounded(value), 1, farthestPlace); }

PixelRect placed(platform::Rect const& points, PixelScale const& scale, std::int32_t width)
{
    auto const doubledCentre = rounded(2 * points.midX() * scale.factor);
    auto const bottom = scale.rootHeight - rounded(points.y * scale.factor);
    auto const height = length(points.height * scale.factor);
    return { place(halfDown(doubledCentre - width)), place(bottom - height), width, height };
}

} // namespace

PixelRect intersectionOf(PixelRect const& first, PixelRect const& second)
{
    PixelRect common { std::max(first.x, second.x), std::max(first.y, second.y), 0, 0 };
    common.width = std::max(std::min(first.right(), second.right()) - common.x, 0);
    common.height = std::max(std::min(first.bottom(), second.bottom()) - common.y, 0);
    return common;
}

PixelRect grownBy(PixelRect const& rect, PixelInsets const& insets)
{
    return { rect.x - insets.left, rect.y - insets.top, rect.width + insets.left + insets.right,
        rect.height + insets.top + insets.bottom };
}

PixelRect shrunkBy(PixelRect const& rect, PixelInsets const& insets)
{
    return { rect.x + insets.left, rect.y + insets.top, rect.width - insets.left - insets.right,
        rect.height - insets.top - insets.bottom };
}

platform::Rect PixelScale::toPoints(PixelRect const& pixels) const
{
    return { pixels.x / factor, (rootHeight - pixels.bottom()) / factor, pixels.width / factor,
        pixels.height / factor };
}

PixelRect PixelScale::toPixels(platform::Rect const& points) const
{
    return placed(points, *this, length(points.width * factor));
}

PixelRect PixelScale::toPixels(platform::Rect const& points, PixelRect const& end) const
{
    auto width = length(points.width * factor);
    if ((end.width - width) % 2 != 0)
        width += end.width > width ? 1 : -1;
    return placed(points, *this, width);
}

} // namespace backends
