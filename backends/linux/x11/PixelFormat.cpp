#include "backends/linux/x11/PixelFormat.h"

#include <algorithm>
#include <bit>

namespace backends {

namespace {

// Well below what servers without big requests take, and little enough that others have their turn in between.
constexpr std::size_t largestRequest = 65536;
constexpr std::size_t requestHeader = 32;

// One colour of a pixel, moved from eight bits to where and as wide as the mask has it.
std::uint32_t placed(std::uint32_t pixel, int shift, std::uint32_t mask)
{
    if (mask == 0)
        return 0;
    auto const place = std::countr_zero(mask);
    std::uint64_t const largest = mask >> place;
    auto const value = ((pixel >> shift & 0xFF) * largest + 127) / 255;
    return static_cast<std::uint32_t>(value) << place;
}

xcb_visualtype_t const* visualOf(xcb_screen_t const& screen)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen.root_visual)
                return visual.data;
        }
    }
    return nullptr;
}

} // namespace

std::optional<PixelFormat> PixelFormat::of(xcb_setup_t const& setup, xcb_screen_t const& screen)
{
    auto const* const visual = visualOf(screen);
    if (!visual || visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR)
        return std::nullopt;
    auto const* const formats = xcb_setup_pixmap_formats(&setup);
    auto const* const end = formats + xcb_setup_pixmap_formats_length(&setup);
    auto const* const format
        = std::find_if(formats, end, [&](auto const& candidate) { return candidate.depth == screen.root_depth; });
    if (format == end || format->bits_per_pixel < 16 || format->bits_per_pixel > 32)
        return std::nullopt;
    return PixelFormat { visual->red_mask, visual->green_mask, visual->blue_mask,
        static_cast<std::uint8_t>(format->bits_per_pixel / 8), static_cast<std::uint8_t>(format->scanline_pad / 8),
        setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST };
}

std::size_t PixelFormat::bytesPerLine(std::int32_t width) const
{
    auto const bytes = static_cast<std::size_t>(width) * bytesPerPixel;
    return (bytes + linePadding - 1) / linePadding * linePadding;
}

std::vector<std::uint8_t> PixelFormat::encoded(PixelView const& picture, PixelRect const& part) const
{
    std::vector<std::uint8_t> bytes(bytesPerLine(part.width) * static_cast<std::size_t>(part.height));
    for (std::int32_t y = 0; y < part.height; ++y) {
        auto const* const from = picture.pixels + static_cast<std::size_t>(part.y + y) * picture.stride + part.x;
        auto* to = bytes.data() + bytesPerLine(part.width) * static_cast<std::size_t>(y);
        for (std::int32_t x = 0; x < part.width; ++x) {
            auto const value
                = placed(from[x], 16, redMask) | placed(from[x], 8, greenMask) | placed(from[x], 0, blueMask);
            for (int i = 0; i < bytesPerPixel; ++i)
                *to++ = static_cast<std::uint8_t>(value >> 8 * (isBigEndian ? bytesPerPixel - 1 - i : i));
        }
    }
    return bytes;
}

void putPixels(xcb_connection_t* wire, xcb_drawable_t drawable, xcb_gcontext_t context, std::uint8_t depth,
    PixelFormat const& format, PixelView const& picture, PixelRect const& part)
{
    if (part.isEmpty())
        return;
    auto const room = std::min(std::size_t { xcb_get_maximum_request_length(wire) } * 4, largestRequest);
    auto const lines = std::max<std::size_t>((room - requestHeader) / format.bytesPerLine(part.width), 1);
    for (auto y = part.y; y < part.bottom(); y += static_cast<std::int32_t>(lines)) {
        auto const height = std::min(static_cast<std::int32_t>(lines), part.bottom() - y);
        auto const bytes = format.encoded(picture, { part.x, y, part.width, height });
        xcb_put_image(wire, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, context, static_cast<std::uint16_t>(part.width),
            static_cast<std::uint16_t>(height), static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(y), 0,
            depth, static_cast<std::uint32_t>(bytes.size()), bytes.data());
    }
}

} // namespace backends
