#pragma once

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

// Without a compositor: a shape with nothing in it, or none.
inline void writeShape(xcb_connection_t* wire, xcb_window_t window, bool isEmpty)
{
    if (isEmpty)
        xcb_shape_rectangles(
            wire, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 0, nullptr);
    else
        xcb_shape_mask(wire, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_PIXMAP_NONE);
}

} // namespace backends
