#include "backends/linux/x11/IconPainter.h"

#include <bit>
#include <utility>

namespace backends {

namespace {

constexpr std::uint8_t blendedDepth = 32;

bool isBlendedFormat(xcb_render_pictforminfo_t const& format)
{
    auto const& channels = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == blendedDepth && channels.alpha_mask == 0xFF
        && channels.alpha_shift == 24 && channels.red_shift == 16 && channels.green_shift == 8
        && channels.blue_shift == 0;
}

// A picture is sent in the server's order of bytes.
std::vector<std::uint32_t> inByteOrder(std::vector<std::uint32_t> pixels, std::uint8_t order)
{
    bool const isServerBigEndian = order == XCB_IMAGE_ORDER_MSB_FIRST;
    if (isServerBigEndian != (std::endian::native == std::endian::big)) {
        for (auto& pixel : pixels)
            pixel = __builtin_bswap32(pixel);
    }
    return pixels;
}

} // namespace

IconPainter::IconPainter(Connection& connection)
    : m_connection(connection)
{
}

IconPainter::~IconPainter() = default;

void IconPainter::askFormats()
{
    if (std::exchange(m_hasAsked, true))
        return;
    std::weak_ptr<bool> const life = m_life;
    auto const cookie = xcb_render_query_pict_formats(m_connection.wire());
    m_connection.ask<xcb_render_query_pict_formats_reply_t>(cookie.sequence, [this, life](auto const* reply) {
        if (life.expired() || !reply)
            return;
        for (auto i = xcb_render_query_pict_formats_formats_iterator(reply); i.rem > 0;
             xcb_render_pictforminfo_next(&i)) {
            if (isBlendedFormat(*i.data))
                m_blendedFormat = i.data->id;
        }
        for (auto screen = xcb_render_query_pict_formats_screens_iterator(reply); screen.rem > 0;
             xcb_render_pictscreen_next(&screen)) {
            for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
                 xcb_render_pictdepth_next(&depth)) {
                auto const* visuals = xcb_render_pictdepth_visuals(depth.data);
                for (int i = 0; i < xcb_render_pictdepth_visuals_length(depth.data); ++i)
                    m_formats[visuals[i].visual] = visuals[i].format;
            }
        }
        if (auto const waiting = std::exchange(m_waiting, nullptr))
            waiting();
    });
}

void IconPainter::paint(xcb_window_t window, xcb_visualid_t visual, PixelRect const& area, BlendedPicture picture)
{
    if (!m_connection.render().isPresent)
        return;
    askFormats();
    if (m_blendedFormat == 0) {
        // Only the latest counts.
        m_waiting = [this, window, visual, area, picture = std::move(picture)] {
            if (m_blendedFormat != 0)
                paint(window, visual, area, picture);
        };
        return;
    }
    xcb_clear_area(m_connection.wire(), 0, window, 0, 0, 0, 0);
    auto const format = m_formats.find(visual);
    if (format != m_formats.end() && picture.width > 0 && picture.height > 0)
        blend(window, format->second, area, picture);
}

void IconPainter::blend(
    xcb_window_t window, xcb_render_pictformat_t format, PixelRect const& area, BlendedPicture const& picture)
{
    auto* const wire = m_connection.wire();
    auto const width = static_cast<std::uint16_t>(picture.width);
    auto const height = static_cast<std::uint16_t>(picture.height);
    auto const pixmap = xcb_generate_id(wire);
    xcb_create_pixmap(wire, blendedDepth, pixmap, m_connection.root(), width, height);
    auto const context = xcb_generate_id(wire);
    xcb_create_gc(wire, context, pixmap, 0, nullptr);
    auto const pixels = inByteOrder(picture.pixels, m_connection.setup().image_byte_order);
    xcb_put_image(wire, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0, blendedDepth,
        static_cast<std::uint32_t>(pixels.size() * sizeof(std::uint32_t)),
        reinterpret_cast<std::uint8_t const*>(pixels.data()));
    auto const source = xcb_generate_id(wire);
    xcb_render_create_picture(wire, source, pixmap, m_blendedFormat, 0, nullptr);
    auto const target = xcb_generate_id(wire);
    xcb_render_create_picture(wire, target, window, format, 0, nullptr);
    auto const x = static_cast<std::int16_t>(area.x + (area.width - picture.width) / 2);
    auto const y = static_cast<std::int16_t>(area.y + (area.height - picture.height) / 2);
    xcb_render_composite(wire, XCB_RENDER_PICT_OP_OVER, source, XCB_NONE, target, 0, 0, 0, 0, x, y, width, height);
    xcb_render_free_picture(wire, target);
    xcb_render_free_picture(wire, source);
    xcb_free_gc(wire, context);
    xcb_free_pixmap(wire, pixmap);
}

} // namespace backends
