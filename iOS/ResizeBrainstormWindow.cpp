#include "iOS/ResizeBrainstormWindow.h"

#include "iOS/NSWindow+Paneweld.h"

#include <algorithm>
#include <cmath>

namespace paneweld {

namespace {

constexpr double frameTolerance = 0.75;
constexpr double lowestFrame = 44.0;

double clamped(double value, double minimum, double maximum) { return std::max(std::min(value, maximum), minimum); }

} // namespace

ResizeGeometry ResizeGeometry::resolve(ResizeBrainstormWindow const& request, platform::Rect const& frame)
{
    platform::Size const minSize { Brainstorm::minimumSize.width,
        request.minHeight.value_or(Brainstorm::minimumSize.height) };
    platform::Size const maxSize { Brainstorm::maximumSize.width,
        request.maxHeight.value_or(Brainstorm::maximumSize.height) };
    auto const width = request.preferredWidth.value_or(frame.width);
    auto const height = request.preferredHeight.value_or(frame.height);
    return { minSize, maxSize,
        { clamped(width, minSize.width, maxSize.width), clamped(height, minSize.height, maxSize.height) } };
}

bool ResizeGeometry::isReached(platform::Rect const& frame) const
{
    return std::abs(frame.width - target.width) <= frameTolerance
        && std::abs(frame.height - target.height) <= frameTolerance;
}

platform::Rect ResizeGeometry::targetFrame(platform::Rect const& frame) const
{
    auto const width = std::max(target.width, Brainstorm::minimumSize.width);
    auto const height = std::max(target.height, lowestFrame);
    return { frame.midX() - width / 2, frame.minY(), width, height };
}

} // namespace paneweld

std::size_t std::hash<paneweld::ResizeBrainstormWindow>::operator()(
    paneweld::ResizeBrainstormWindow const& value) const noexcept
{
    std::size_t seed = std::hash<std::string> {}(value.windowIdentifier);
    auto const mix = [&](std::size_t part) { seed = seed * 31 + part; };
    for (auto const& number : { value.minHeight, value.maxHeight, value.preferredWidth, value.preferredHeight })
        mix(number ? std::hash<double> {}(*number) : 0);
    mix(value.preferredSizeID ? std::hash<std::string> {}(value.preferredSizeID->uuidString()) : 0);
    mix(value.isAnimated ? 1 : 0);
    return seed;
}
