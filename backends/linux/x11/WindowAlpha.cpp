#include "backends/linux/x11/WindowAlpha.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11Desktop.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <xcb/shape.h>

namespace backends {

namespace {

constexpr std::uint32_t opaque = 0xFFFFFFFF;

} // namespace

void WindowAlpha::setValue(double alpha)
{
    m_value = std::isfinite(alpha) ? std::clamp(alpha, 0.0, 1.0) : 1;
    apply();
}

void WindowAlpha::hold()
{
    m_isHeld = true;
    apply();
}

void WindowAlpha::release()
{
    m_isHeld = false;
    apply();
}

void WindowAlpha::takeOver(bool hasEmptyShape)
{
    m_writtenOpacity = 0;
    m_hasEmptyShape = hasEmptyShape;
    hold();
}

void WindowAlpha::apply()
{
    auto const alpha = m_isHeld ? 0 : m_value;
    writeOpacity(alpha);
    writeShape(alpha <= 0 && !m_context.desktop.isCompositing());
}

void WindowAlpha::writeOpacity(double alpha)
{
    auto const opacity = static_cast<std::uint32_t>(std::llround(alpha * opaque));
    if (std::exchange(m_writtenOpacity, opacity) == opacity)
        return;
    auto& connection = m_context.connection;
    auto const property = connection.atom(AtomName::NET_WM_WINDOW_OPACITY);
    if (opacity == opaque)
        xcb_delete_property(connection.wire(), m_window, property);
    else
        xcb_change_property(
            connection.wire(), XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_CARDINAL, 32, 1, &opacity);
}

void WindowAlpha::writeShape(bool isEmpty)
{
    auto& connection = m_context.connection;
    if (!connection.shape().isPresent || std::exchange(m_hasEmptyShape, isEmpty) == isEmpty)
        return;
    if (isEmpty) {
        xcb_shape_rectangles(connection.wire(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED,
            m_window, 0, 0, 0, nullptr);
        return;
    }
    xcb_shape_mask(connection.wire(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, m_window, 0, 0, XCB_PIXMAP_NONE);
}

} // namespace backends
