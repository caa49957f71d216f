#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace backends {

// What keeps a window unseen, as it is written to the server.

constexpr std::uint32_t opaque = 0xFFFFFFFF;

// For compositors; the atom is that of _NET_WM_WINDOW_OPACITY. A window without the property is opaque.
inline void writeOpacity(xcb_connection_t* wire, xcb_window_t window, xcb_atom_t property, std::uint32_t opacity)
{
    if (opacity == opaque)
        xcb_delete_property(wire, window, property);
    else
        xcb_change_property(wire, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_CARDINAL, 32, 1, &opacity);
}

// Without a compositor: a shape with nothing in it, or none. Whoever writes an empty one hears when somebody else takes
// it off, as toolkits do with every shape of a window that they have just made.
inline void writeShape(xcb_connection_t* wire, xcb_window_t window, bool isEmpty)
{
    xcb_shape_select_input(wire, window, isEmpty);
    if (isEmpty)
        xcb_shape_rectangles(
            wire, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 0, nullptr);
    else
        xcb_shape_mask(wire, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_PIXMAP_NONE);
}

// The window that has no shape any more, if this event says so.
inline xcb_window_t unshapedWindow(xcb_generic_event_t const& event, Connection::Extension const& shape)
{
    auto const& notice = reinterpret_cast<xcb_shape_notify_event_t const&>(event);
    bool const isNotice = shape.isPresent && (event.response_type & 0x7F) == shape.firstEvent + XCB_SHAPE_NOTIFY;
    if (!isNotice || notice.shape_kind != XCB_SHAPE_SK_BOUNDING || notice.shaped)
        return XCB_WINDOW_NONE;
    return notice.affected_window;
}

} // namespace backends
