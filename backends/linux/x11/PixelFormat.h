#pragma once

#include "backends/linux/x11/PixelRect.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// A picture in memory: 0x00RRGGBB each, as many to a line as the stride says.
struct PixelView {
    std::uint32_t const* pixels = nullptr;
    std::size_t stride = 0;
};

// How a screen wants the pixels of its windows: how many bytes each, in which order, and where in them the colours are
// (X protocol, section 8, "Connection Setup").
struct PixelFormat {
    std::uint32_t redMask = 0xFF0000;
    std::uint32_t greenMask = 0xFF00;
    std::uint32_t blueMask = 0xFF;
    std::uint8_t bytesPerPixel = 4;
    // Lines begin at multiples of so many bytes.
    std::uint8_t linePadding = 4;
    bool isBigEndian = false;

    // Of the root's own visual. Absent for a screen whose pixels are no colours but places in a table.
    static std::optional<PixelFormat> of(xcb_setup_t const& setup, xcb_screen_t const& screen);

    std::size_t bytesPerLine(std::int32_t width) const;
    std::vector<std::uint8_t> encoded(PixelView const& picture, PixelRect const& part) const;
};

// Puts a part of a picture at the same place of a drawable, in requests that every server takes.
void putPixels(xcb_connection_t* wire, xcb_drawable_t drawable, xcb_gcontext_t context, std::uint8_t depth,
    PixelFormat const& format, PixelView const& picture, PixelRect const& part);

} // namespace backends
