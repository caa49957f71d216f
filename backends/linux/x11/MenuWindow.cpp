#include "backends/linux/x11/MenuWindow.h"

#include <string_view>

namespace backends {

namespace {

constexpr std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE
    | XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_STRUCTURE_NOTIFY
    | XCB_EVENT_MASK_FOCUS_CHANGE;

// Instance and class (ICCCM 4.1.2.5), each with a zero behind it.
constexpr std::string_view classHint { "menu\0Paneweld\0", 14 };

} // namespace

MenuWindow::MenuWindow(Connection& connection, PixelFormat const& format, std::string const& title)
    : m_connection(connection)
    , m_format(format)
    , m_xid(xcb_generate_id(connection.wire()))
    , m_context(xcb_generate_id(connection.wire()))
{
    auto const& screen = connection.screen();
    std::uint32_t const values[] { 1, 1, events };
    xcb_create_window(connection.wire(), XCB_COPY_FROM_PARENT, m_xid, screen.root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
        XCB_CW_OVERRIDE_REDIRECT | XCB_CW_SAVE_UNDER | XCB_CW_EVENT_MASK, values);
    // Copies to a window would have the server tell of each of them.
    std::uint32_t const graphicsExposures = 0;
    xcb_create_gc(connection.wire(), m_context, m_xid, XCB_GC_GRAPHICS_EXPOSURES, &graphicsExposures);
    setProperties(title);
}

MenuWindow::~MenuWindow()
{
    if (!m_connection.isAlive())
        return;
    freePicture();
    xcb_free_gc(m_connection.wire(), m_context);
    // Somebody else may have destroyed it, and then it cannot be done again.
    auto const unmapping = xcb_unmap_window(m_connection.wire(), m_xid);
    auto const destruction = xcb_destroy_window(m_connection.wire(), m_xid);
    m_connection.askOutcome({ unmapping.sequence, destruction.sequence }, [](auto const*) {});
}

void MenuWindow::setProperties(std::string const& title)
{
    auto const set = [this](xcb_atom_t property, xcb_atom_t type, std::string_view bytes) {
        xcb_change_property(m_connection.wire(), XCB_PROP_MODE_REPLACE, m_xid, property, type, 8,
            static_cast<std::uint32_t>(bytes.size()), bytes.data());
    };
    set(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, classHint);
    set(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
    set(m_connection.atom(AtomName::NET_WM_NAME), m_connection.atom(AtomName::UTF8_STRING), title);
    // Compositors give it the shadow and the fading of menus.
    auto const type = m_connection.atom(AtomName::NET_WM_WINDOW_TYPE_POPUP_MENU);
    xcb_change_property(m_connection.wire(), XCB_PROP_MODE_REPLACE, m_xid,
        m_connection.atom(AtomName::NET_WM_WINDOW_TYPE), XCB_ATOM_ATOM, 32, 1, &type);
}

void MenuWindow::freePicture()
{
    if (m_picture != XCB_PIXMAP_NONE)
        xcb_free_pixmap(m_connection.wire(), m_picture);
    m_picture = XCB_PIXMAP_NONE;
}

void MenuWindow::show(PixelRect const& place, PixelView const& picture)
{
    auto* const wire = m_connection.wire();
    auto const depth = m_connection.screen().root_depth;
    freePicture();
    m_picture = xcb_generate_id(wire);
    m_place = place;
    xcb_create_pixmap(wire, depth, m_picture, m_xid, static_cast<std::uint16_t>(place.width),
        static_cast<std::uint16_t>(place.height));
    PixelRect const whole { 0, 0, place.width, place.height };
    putPixels(wire, m_picture, m_context, depth, m_format, picture, whole);
    xcb_change_window_attributes(wire, m_xid, XCB_CW_BACK_PIXMAP, &m_picture);
    std::uint32_t const configuration[] { static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
        static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height), XCB_STACK_MODE_ABOVE };
    xcb_configure_window(wire, m_xid,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT
            | XCB_CONFIG_WINDOW_STACK_MODE,
        configuration);
    xcb_clear_area(wire, 0, m_xid, 0, 0, 0, 0);
    xcb_map_window(wire, m_xid);
}

void MenuWindow::update(PixelView const& picture, PixelRect const& part)
{
    auto const visible = intersectionOf(part, { 0, 0, m_place.width, m_place.height });
    if (visible.isEmpty())
        return;
    auto* const wire = m_connection.wire();
    auto const depth = m_connection.screen().root_depth;
    putPixels(wire, m_picture, m_context, depth, m_format, picture, visible);
    // A server may have copied the picture when it became the background.
    xcb_change_window_attributes(wire, m_xid, XCB_CW_BACK_PIXMAP, &m_picture);
    xcb_clear_area(wire, 0, m_xid, static_cast<std::int16_t>(visible.x), static_cast<std::int16_t>(visible.y),
        static_cast<std::uint16_t>(visible.width), static_cast<std::uint16_t>(visible.height));
}

} // namespace backends
