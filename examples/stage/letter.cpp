// Somebody else's program on the stage of the scripted session: a letter that is being written, and a shortcut of its
// own, Ctrl+Alt+K, which nobody else can have as long as it runs. Says "open" when both are there.

#include <array>
#include <cairo-xcb.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>
#include <xcb/xcb.h>

namespace {

struct Free {
    void operator()(void* pointer) const { std::free(pointer); }
};
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

constexpr std::int16_t left = 570;
constexpr std::int16_t top = 50;
constexpr std::uint16_t width = 700;
constexpr std::uint16_t height = 500;

constexpr std::array<char const*, 9> lines { "Dear Mina,", "",
    "thank you for the lanterns. They hang in the old oak now, and every",
    "child of the village has counted them twice.", "",
    "About the fair: the committee wants to know by Friday who brings",
    "what. I have promised apple rings, and fear to have promised them",
    "twice as well. Could you ask at the mill whether they still have the", "long tables?" };

class Letter {
public:
    explicit Letter(std::unique_ptr<xcb_connection_t, Disconnect> connection)
        : m_connection(std::move(connection))
        , m_screen(xcb_setup_roots_iterator(xcb_get_setup(wire())).data)
        , m_window(xcb_generate_id(wire()))
    {
    }

    bool open() const
    {
        if (!grabShortcut())
            return false;
        std::uint32_t const values[] = { m_screen->white_pixel, XCB_EVENT_MASK_EXPOSURE };
        xcb_create_window(wire(), XCB_COPY_FROM_PARENT, m_window, m_screen->root, left, top, width, height, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        setText(XCB_ATOM_WM_NAME, "Letter");
        setText(XCB_ATOM_WM_CLASS, std::string_view("letter\0Letter", 14));
        // The place was chosen by the user, says the first word (ICCCM 4.1.2.3): no window manager looks for a better
        // one.
        std::uint32_t const hints[18] = { 1, left, top };
        xcb_change_property(
            wire(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
        xcb_map_window(wire(), m_window);
        return xcb_flush(wire()) > 0;
    }

    // Until it is ended from outside, or the server goes.
    void run() const
    {
        while (std::unique_ptr<xcb_generic_event_t, Free> const event { xcb_wait_for_event(wire()) }) {
            if ((event->response_type & 0x7F) == XCB_EXPOSE)
                paint();
        }
    }

private:
    xcb_connection_t* wire() const { return m_connection.get(); }

    void setText(xcb_atom_t property, std::string_view text) const
    {
        xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_STRING, 8,
            static_cast<std::uint32_t>(text.size()), text.data());
    }

    bool grabShortcut() const
    {
        auto const* const setup = xcb_get_setup(wire());
        auto const count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        std::unique_ptr<xcb_get_keyboard_mapping_reply_t, Free> const keyboard(xcb_get_keyboard_mapping_reply(
            wire(), xcb_get_keyboard_mapping(wire(), setup->min_keycode, count), nullptr));
        if (!keyboard)
            return false;
        auto const* const symbols = xcb_get_keyboard_mapping_keysyms(keyboard.get());
        for (int key = 0; key < count; ++key) {
            if (symbols[key * keyboard->keysyms_per_keycode] == 'k')
                return grab(static_cast<xcb_keycode_t>(setup->min_keycode + key));
        }
        return false;
    }

    bool grab(xcb_keycode_t key) const
    {
        auto const cookie = xcb_grab_key_checked(wire(), 0, m_screen->root, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1, key,
            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        std::unique_ptr<xcb_generic_error_t, Free> const error(xcb_request_check(wire(), cookie));
        return !error;
    }

    void paint() const
    {
        auto depth = xcb_screen_allowed_depths_iterator(m_screen);
        while (depth.rem && depth.data->depth != m_screen->root_depth)
            xcb_depth_next(&depth);
        auto* const surface
            = cairo_xcb_surface_create(wire(), m_window, xcb_depth_visuals_iterator(depth.data).data, width, height);
        auto* const cr = cairo_create(surface);
        cairo_set_source_rgb(cr, 1, 0.995, 0.975);
        cairo_paint(cr);
        cairo_select_font_face(cr, "Cantarell", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(cr, 17);
        cairo_set_source_rgb(cr, 0.23, 0.22, 0.25);
        double y = 64;
        for (auto const* const line : lines) {
            cairo_move_to(cr, 52, y);
            cairo_show_text(cr, line);
            y += 30;
        }
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
        xcb_flush(wire());
    }

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_screen_t* m_screen;
    xcb_window_t m_window;
};

} // namespace

int main()
{
    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get())) {
        std::fputs("demo_letter: no display can be reached\n", stderr);
        return 1;
    }
    Letter const letter(std::move(connection));
    if (!letter.open()) {
        std::fputs("demo_letter: another program has Ctrl+Alt+K\n", stderr);
        return 1;
    }
    std::puts("open");
    std::fflush(stdout);
    letter.run();
    return 0;
}
