#include "backends/linux/x11/WindowLimits.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11Desktop.h"
#include "backends/linux/x11/X11Screen.h"

#include <algorithm>
#include <cmath>

namespace backends {

namespace {

// X counts the sides of windows in 16 bits, of which window managers like to use 15.
constexpr double largestSide = 32767;

std::int32_t pixels(double points, double factor)
{
    if (!std::isfinite(points))
        return static_cast<std::int32_t>(largestSide);
    return static_cast<std::int32_t>(std::lround(std::clamp(points * factor, 1.0, largestSide)));
}

} // namespace

void WindowLimits::setMinimum(platform::Size const& size)
{
    m_minimum = size;
    write();
}

void WindowLimits::setMaximum(platform::Size const& size)
{
    m_maximum = size;
    write();
}

void WindowLimits::setInsets(PixelInsets const& insets)
{
    m_insets = insets;
    write();
}

void WindowLimits::include(PixelRect const& current, PixelRect const& next)
{
    m_included = { current, next };
    write();
}

void WindowLimits::placeBeforeMapping(PixelRect const& rect)
{
    m_placed = rect;
    include(rect, rect);
}

void WindowLimits::handleRead(SizeHints const& hints)
{
    // Our own writing comes back too.
    if (m_isRead && hints == m_written)
        return;
    m_isRead = true;
    m_toolkit = hints;
    m_written = hints;
    write();
}

SizeHints WindowLimits::wanted() const
{
    auto hints = m_toolkit;
    auto const factor = m_context.screen.scale().factor;
    auto const extraWidth = m_insets.left + m_insets.right;
    auto const extraHeight = m_insets.top + m_insets.bottom;
    std::int32_t minimumWidth = hints.hasMinimum() ? hints.minimumWidth() : 1;
    std::int32_t minimumHeight = hints.hasMinimum() ? hints.minimumHeight() : 1;
    if (m_minimum) {
        minimumWidth = pixels(m_minimum->width, factor) + extraWidth;
        minimumHeight = pixels(m_minimum->height, factor) + extraHeight;
        hints.setMinimum(minimumWidth, minimumHeight);
    }
    if (m_maximum) {
        // Where the limits cross, the minimum wins.
        hints.setMaximum(std::max(pixels(m_maximum->width, factor) + extraWidth, minimumWidth),
            std::max(pixels(m_maximum->height, factor) + extraHeight, minimumHeight));
    }
    if (m_included) {
        hints.include(m_included->first.width, m_included->first.height);
        hints.include(m_included->second.width, m_included->second.height);
    }
    if (m_placed)
        hints.setPlacedByUser(m_placed->x, m_placed->y, m_placed->width, m_placed->height);
    // A plain configure request moves the frame's corner unless the window asks to stay where it is.
    if (m_included && !m_context.desktop.supports(AtomName::NET_MOVERESIZE_WINDOW))
        hints.setStaticGravity();
    return hints;
}

void WindowLimits::write()
{
    // Before the toolkit's own hints are known they would be lost.
    if (!m_isRead || (!isSet() && !m_included))
        return;
    auto const hints = wanted();
    if (hints == m_written)
        return;
    m_written = hints;
    m_willWrite();
    auto& connection = m_context.connection;
    xcb_change_property(connection.wire(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS,
        XCB_ATOM_WM_SIZE_HINTS, 32, SizeHints::wordCount, hints.words().data());
}

} // namespace backends
