#include "tests/linux/Screenshot.h"

#include <algorithm>
#include <cairo.h>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace paneweld_tests {

namespace {

constexpr std::uint32_t colourMask = 0xFFFFFF;

} // namespace

Screenshot::Screenshot(Client& client)
    : Screenshot(client, { 0, 0, client.screen().width_in_pixels, client.screen().height_in_pixels })
{
}

Screenshot::Screenshot(Client& client, Geometry area)
    : m_area(area)
    , m_pixels(static_cast<std::size_t>(area.width) * area.height)
{
    auto const cookie = xcb_get_image(client.wire(), XCB_IMAGE_FORMAT_Z_PIXMAP, client.root(),
        static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
        static_cast<std::uint16_t>(area.height), ~0u);
    auto* const image = xcb_get_image_reply(client.wire(), cookie, nullptr);
    // A part that is not on the screen has no picture.
    if (!image)
        return;
    auto const length = std::min(m_pixels.size() * 4, static_cast<std::size_t>(xcb_get_image_data_length(image)));
    std::memcpy(m_pixels.data(), xcb_get_image_data(image), length);
    free(image);
}

std::optional<Geometry> Screenshot::find(std::uint32_t colour) const
{
    int left = m_area.width, right = -1, top = m_area.height, bottom = -1;
    for (int y = 0; y < m_area.height; ++y) {
        for (int x = 0; x < m_area.width; ++x) {
            if ((m_pixels[static_cast<std::size_t>(y) * m_area.width + x] & colourMask) != colour)
                continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    if (right < 0)
        return std::nullopt;
    return Geometry { m_area.x + left, m_area.y + top, right - left + 1, bottom - top + 1 };
}

int Screenshot::colours() const
{
    return static_cast<int>(std::set<std::uint32_t>(m_pixels.begin(), m_pixels.end()).size());
}

void Screenshot::keep(std::string const& name) const
{
    std::filesystem::create_directories(PANEWELD_TEST_ARTEFACTS);
    auto pixels = m_pixels;
    auto* const surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
        CAIRO_FORMAT_RGB24, m_area.width, m_area.height, m_area.width * 4);
    auto const path = PANEWELD_TEST_ARTEFACTS "/" + name + ".png";
    EXPECT_EQ(cairo_surface_write_to_png(surface, path.c_str()), CAIRO_STATUS_SUCCESS) << path;
    cairo_surface_destroy(surface);
}

} // namespace paneweld_tests
