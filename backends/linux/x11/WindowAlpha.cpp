#include "backends/linux/x11/WindowAlpha.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11Desktop.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace backends {

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
    // Believed only where it has to go: before its loss was heard of here it may be gone already.
    m_hasEmptyShape = hasEmptyShape && m_context.desktop.isCompositing();
    hold();
}

void WindowAlpha::shapeWasTakenOff()
{
    if (m_hasEmptyShape)
        backends::writeShape(m_context.connection.wire(), m_window, true);
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
    backends::writeOpacity(connection.wire(), m_window, connection.atom(AtomName::NET_WM_WINDOW_OPACITY), opacity);
}

void WindowAlpha::writeShape(bool isEmpty)
{
    auto& connection = m_context.connection;
    if (!connection.shape().isPresent || std::exchange(m_hasEmptyShape, isEmpty) == isEmpty)
        return;
    backends::writeShape(connection.wire(), m_window, isEmpty);
}

} // namespace backends
