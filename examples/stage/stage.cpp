// The stage of the scripted session: paints what is behind the windows, and takes pictures of the X screen.
//
//   demo_stage backdrop             a quiet sky, which stays when the program has ended
//   demo_stage still FILE.png       one picture, as soon as nothing has moved for a moment
//   demo_stage film PREFIX SECONDS  every frame of an animation that differs from the one before
//
// "film" prints "recording" when it has the first frame, takes further ones for the given time, and writes them as
// PREFIX-00.png, PREFIX-01.png and so on. At last it says how many there are.

#include <algorithm>
#include <cairo-xcb.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace {

struct Free {
    void operator()(void* pointer) const { std::free(pointer); }
};
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct DestroySurface {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

using Clock = std::chrono::steady_clock;
constexpr auto frameTime = std::chrono::milliseconds(12);
// More would be a film and no strip, and fill the memory.
constexpr std::size_t frameLimit = 120;
constexpr int framesAtRest = 8;
constexpr int framesUntilPatienceEnds = 400;

struct Frame {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels {};

    bool operator==(Frame const&) const = default;
};

class Screen {
public:
    Screen()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
    }

    // Compositors and other programs find the picture by the property, and keep it as long as it stands there.
    bool paintBackdrop() const
    {
        auto* const connection = m_connection.get();
        if (xcb_connection_has_error(connection))
            return false;
        auto const* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        auto const pixmap = xcb_generate_id(connection);
        int const width = screen->width_in_pixels;
        int const height = screen->height_in_pixels;
        xcb_create_pixmap(
            connection, screen->root_depth, pixmap, screen->root, screen->width_in_pixels, screen->height_in_pixels);
        paintSky(cairo_xcb_surface_create(connection, pixmap, rootVisual(*screen), width, height), width, height);

        xcb_change_window_attributes(connection, screen->root, XCB_CW_BACK_PIXMAP, &pixmap);
        xcb_clear_area(connection, 0, screen->root, 0, 0, 0, 0);
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, screen->root, atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
        xcb_set_close_down_mode(connection, XCB_CLOSE_DOWN_RETAIN_PERMANENT);
        std::unique_ptr<xcb_get_input_focus_reply_t, Free> const echo(
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        return echo != nullptr;
    }

    std::optional<Frame> grab() const
    {
        if (xcb_connection_has_error(m_connection.get()))
            return std::nullopt;
        auto const* const screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data;
        auto const cookie = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
            screen->width_in_pixels, screen->height_in_pixels, ~0U);
        std::unique_ptr<xcb_get_image_reply_t, Free> const reply(
            xcb_get_image_reply(m_connection.get(), cookie, nullptr));
        // Four bytes a pixel is what every true-colour server of today answers with.
        std::size_t const size = std::size_t { screen->width_in_pixels } * screen->height_in_pixels * 4;
        if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < size)
            return std::nullopt;
        auto const* const data = xcb_get_image_data(reply.get());
        return Frame { screen->width_in_pixels, screen->height_in_pixels, { data, data + size } };
    }

private:
    static xcb_visualtype_t* rootVisual(xcb_screen_t const& screen)
    {
        for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem; xcb_depth_next(&depth)) {
            for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem; xcb_visualtype_next(&visual)) {
                if (visual.data->visual_id == screen.root_visual)
                    return visual.data;
            }
        }
        return nullptr;
    }

    static void paintSky(cairo_surface_t* surface, double width, double height)
    {
        std::unique_ptr<cairo_surface_t, DestroySurface> const held(surface);
        auto* const cr = cairo_create(surface);
        auto* const sky = cairo_pattern_create_linear(0, 0, width * 0.4, height * 1.15);
        cairo_pattern_add_color_stop_rgb(sky, 0, 0.27, 0.29, 0.60);
        cairo_pattern_add_color_stop_rgb(sky, 0.55, 0.60, 0.47, 0.72);
        cairo_pattern_add_color_stop_rgb(sky, 1, 0.95, 0.66, 0.58);
        cairo_set_source(cr, sky);
        cairo_paint(cr);
        cairo_pattern_destroy(sky);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
    }

    xcb_atom_t atom(std::string_view name) const
    {
        auto const cookie
            = xcb_intern_atom(m_connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
        std::unique_ptr<xcb_intern_atom_reply_t, Free> const reply(
            xcb_intern_atom_reply(m_connection.get(), cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t { XCB_ATOM_NONE };
    }

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
};

bool write(Frame& frame, std::string const& path)
{
    std::unique_ptr<cairo_surface_t, DestroySurface> const surface(cairo_image_surface_create_for_data(
        frame.pixels.data(), CAIRO_FORMAT_RGB24, frame.width, frame.height, frame.width * 4));
    return cairo_surface_write_to_png(surface.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
}

void waitUntil(Clock::time_point time)
{
    auto const rest = std::chrono::duration_cast<std::chrono::milliseconds>(time - Clock::now());
    poll(nullptr, 0, std::max(0, static_cast<int>(rest.count())));
}

int still(std::string const& path)
{
    Screen const screen;
    auto last = screen.grab();
    int same = 0;
    for (int count = 0; last && same < framesAtRest && count < framesUntilPatienceEnds; ++count) {
        waitUntil(Clock::now() + frameTime);
        auto frame = screen.grab();
        same = frame == last ? same + 1 : 0;
        last = std::move(frame);
    }
    return last && write(*last, path) ? 0 : 1;
}

int film(std::string const& prefix, double seconds)
{
    Screen const screen;
    std::vector<Frame> frames;
    auto const start = Clock::now();
    auto const end = start + std::chrono::duration<double>(seconds);
    for (auto next = start; next < end && frames.size() < frameLimit; next += frameTime) {
        auto frame = screen.grab();
        if (!frame)
            return 1;
        if (frames.empty()) {
            std::puts("recording");
            std::fflush(stdout);
        }
        if (frames.empty() || !(frames.back() == *frame))
            frames.push_back(std::move(*frame));
        waitUntil(next + frameTime);
    }

    for (std::size_t index = 0; index < frames.size(); ++index) {
        char number[32];
        std::snprintf(number, sizeof number, "-%02zu.png", index);
        if (!write(frames[index], prefix + number))
            return 1;
    }
    std::printf("%zu frames\n", frames.size());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string_view const command = argc > 1 ? argv[1] : "";
    if (command == "backdrop" && argc == 2)
        return Screen().paintBackdrop() ? 0 : 1;
    if (command == "still" && argc == 3)
        return still(argv[2]);
    if (command == "film" && argc == 4)
        return film(argv[2], std::strtod(argv[3], nullptr));
    std::fputs("usage: demo_stage backdrop | still FILE.png | film PREFIX SECONDS\n", stderr);
    return 2;
}
