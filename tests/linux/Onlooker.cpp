#include "tests/linux/Onlooker.h"

#include <cstdlib>
#include <xcb/shape.h>

namespace paneweld_tests {

Onlooker::Onlooker(std::string const& display)
    : Client(display)
    , m_shapeEvent(xcb_get_extension_data(wire(), &xcb_shape_id)->first_event)
{
}

void Onlooker::watch(xcb_window_t window)
{
    m_window = window;
    m_frame = frameOf(window);
    std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(wire(), window, XCB_CW_EVENT_MASK, &mask);
    std::uint32_t const frameMask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (m_frame != window)
        xcb_change_window_attributes(wire(), m_frame, XCB_CW_EVENT_MASK, &frameMask);
    xcb_shape_select_input(wire(), window, 1);
    sync();
}

void Onlooker::look()
{
    while (auto* event = xcb_poll_for_event(wire())) {
        note(*event);
        std::free(event);
    }
}

std::vector<Geometry> Onlooker::geometries() const
{
    std::vector<Geometry> geometries;
    for (auto const& entry : m_entries) {
        if (entry.kind == Kind::Configured)
            geometries.push_back(entry.geometry);
    }
    return geometries;
}

void Onlooker::note(xcb_generic_event_t const& event)
{
    Entry entry;
    auto const type = event.response_type & 0x7F;
    if (type == XCB_MAP_NOTIFY) {
        entry.kind = Kind::Mapped;
    } else if (type == XCB_UNMAP_NOTIFY) {
        entry.kind = Kind::Unmapped;
    } else if (type == XCB_REPARENT_NOTIFY) {
        entry.kind = Kind::Reparented;
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        // A window manager resizes its frame and what is in it one after the other; the frame is what is on the screen.
        auto const& configure = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        if (configure.window != m_frame)
            return;
        entry.kind = Kind::Configured;
        entry.geometry = { configure.x, configure.y, configure.width, configure.height };
    } else if (type == XCB_PROPERTY_NOTIFY) {
        auto const& property = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        bool const isOpacity = property.atom == atom("_NET_WM_WINDOW_OPACITY");
        entry.kind = isOpacity ? Kind::Opacity : Kind::Property;
        if (isOpacity)
            entry.opacity = opacity(m_window);
        auto* name = xcb_get_atom_name_reply(wire(), xcb_get_atom_name(wire(), property.atom), nullptr);
        if (name)
            entry.property.assign(xcb_get_atom_name_name(name), name->name_len);
        std::free(name);
    } else if (type == m_shapeEvent) {
        auto const& shape = reinterpret_cast<xcb_shape_notify_event_t const&>(event);
        entry.kind = Kind::Shape;
        entry.isEmptyShape = shape.shaped && (shape.extents_width == 0 || shape.extents_height == 0);
    } else {
        return;
    }
    m_entries.push_back(entry);
}

} // namespace paneweld_tests
