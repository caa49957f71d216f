#include "tests/linux/TrayStandIn.h"

#include "backends/linux/x11/Handles.h"

#include <algorithm>
#include <array>

namespace paneweld_tests {

using backends::XHandle;

TrayStandIn::TrayStandIn(std::string const& display, Manners manners)
    : Client(display)
    , m_manners(std::move(manners))
    , m_owner(xcb_generate_id(wire()))
    , m_bar(xcb_generate_id(wire()))
    , m_opcode(atom("_NET_SYSTEM_TRAY_OPCODE"))
{
    auto const& bar = m_manners.bar;
    std::array<std::uint32_t, 3> const values { m_manners.ground, 1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY };
    xcb_create_window(wire(), XCB_COPY_FROM_PARENT, m_bar, root(), static_cast<std::int16_t>(bar.x),
        static_cast<std::int16_t>(bar.y), static_cast<std::uint16_t>(bar.width), static_cast<std::uint16_t>(bar.height),
        0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(wire(), m_bar);
    xcb_create_window(wire(), XCB_COPY_FROM_PARENT, m_owner, root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, 0, nullptr);
    announce();
}

void TrayStandIn::announce()
{
    auto const selection = atom("_NET_SYSTEM_TRAY_S0");
    setWords("_NET_SYSTEM_TRAY_ORIENTATION", XCB_ATOM_CARDINAL, { m_manners.isVertical ? 1u : 0u });
    if (m_manners.wantsAlpha)
        setWords("_NET_SYSTEM_TRAY_VISUAL", XCB_ATOM_VISUALID, { alphaVisual() });
    xcb_set_selection_owner(wire(), m_owner, selection, XCB_CURRENT_TIME);
    send(root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY, message(root(), "MANAGER", { XCB_CURRENT_TIME, selection, m_owner }));
    // As real ones do: some of it is told afterwards only.
    setForeground(m_manners.foreground);
    sync();
}

void TrayStandIn::setWords(std::string const& property, xcb_atom_t type, std::vector<std::uint32_t> const& words)
{
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, m_owner, atom(property), type, 32,
        static_cast<std::uint32_t>(words.size()), words.data());
}

void TrayStandIn::setForeground(std::vector<std::uint32_t> const& foreground)
{
    if (foreground.empty())
        return;
    // Foreground, error, warning and success.
    std::vector<std::uint32_t> words(12, 0x1234);
    std::copy(foreground.begin(), foreground.end(), words.begin());
    setWords("_NET_SYSTEM_TRAY_COLORS", XCB_ATOM_CARDINAL, words);
    xcb_flush(wire());
}

xcb_visualid_t TrayStandIn::alphaVisual() const
{
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen()); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == 32)
            return xcb_depth_visuals(depth.data)[0].visual_id;
    }
    return XCB_NONE;
}

void TrayStandIn::handleEvents()
{
    while (XHandle<xcb_generic_event_t> const event { xcb_poll_for_event(wire()) }) {
        auto const type = event->response_type & 0x7F;
        if (type == XCB_CLIENT_MESSAGE) {
            auto const& message = reinterpret_cast<xcb_client_message_event_t const&>(*event);
            // 0: to be docked.
            if (message.type != m_opcode || message.data.data32[1] != 0)
                continue;
            m_asked.push_back(message.data.data32[2]);
            if (m_manners.takesIcons)
                take(message.data.data32[2]);
        } else if (type == XCB_DESTROY_NOTIFY) {
            std::erase(m_icons, reinterpret_cast<xcb_destroy_notify_event_t const&>(*event).window);
        }
    }
}

void TrayStandIn::take(xcb_window_t icon)
{
    auto const offset = static_cast<int>(m_icons.size()) * (m_manners.isVertical ? m_manners.height : m_manners.width);
    m_icons.push_back(icon);
    xcb_change_save_set(wire(), XCB_SET_MODE_INSERT, icon);
    xcb_reparent_window(wire(), icon, m_bar, static_cast<std::int16_t>(m_manners.isVertical ? 0 : offset),
        static_cast<std::int16_t>(m_manners.isVertical ? offset : 0));
    setSize(icon, m_manners.width, m_manners.height);
    xcb_map_window(wire(), icon);
    sync();
}

void TrayStandIn::setSize(xcb_window_t icon, int width, int height)
{
    std::array<std::uint32_t, 2> const size { static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height) };
    xcb_configure_window(wire(), icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
    xcb_flush(wire());
}

void TrayStandIn::putOut(xcb_window_t icon)
{
    std::erase(m_icons, icon);
    xcb_unmap_window(wire(), icon);
    xcb_reparent_window(wire(), icon, root(), 0, 0);
    xcb_flush(wire());
}

void TrayStandIn::quit()
{
    while (!m_icons.empty())
        putOut(m_icons.back());
    xcb_set_selection_owner(wire(), XCB_WINDOW_NONE, atom("_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
    sync();
}

std::uint32_t TrayStandIn::iconPixel(xcb_window_t icon, int x, int y)
{
    auto const cookie = xcb_get_image(
        wire(), XCB_IMAGE_FORMAT_Z_PIXMAP, icon, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0u);
    XHandle<xcb_get_image_reply_t> const image(xcb_get_image_reply(wire(), cookie, nullptr));
    return image ? *reinterpret_cast<std::uint32_t const*>(xcb_get_image_data(image.get())) : 0;
}

} // namespace paneweld_tests
