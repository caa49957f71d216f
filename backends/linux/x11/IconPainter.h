#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/PixelRect.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>
#include <xcb/render.h>

namespace backends {

// A picture as the X server blends it: row by row, 0xAARRGGBB, the colours multiplied by alpha.
struct BlendedPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels {};
};

// Draws pictures over what windows have as their background, whatever visual they have (RENDER extension). Main thread
// only.
class IconPainter {
public:
    explicit IconPainter(Connection& connection);
    ~IconPainter();
    IconPainter(IconPainter const&) = delete;
    IconPainter& operator=(IconPainter const&) = delete;

    // In the middle of the area of a window, which shows its background everywhere else. What is painted first appears
    // with the server's answer to what it can blend; without the extension nothing does.
    void paint(xcb_window_t window, xcb_visualid_t visual, PixelRect const& area, BlendedPicture picture);

private:
    void askFormats();
    void blend(
        xcb_window_t window, xcb_render_pictformat_t format, PixelRect const& area, BlendedPicture const& picture);

    Connection& m_connection;
    bool m_hasAsked = false;
    xcb_render_pictformat_t m_blendedFormat = 0;
    std::map<xcb_visualid_t, xcb_render_pictformat_t> m_formats;
    std::function<void()> m_waiting;
    // Gone with this object.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace backends
