#include "backends/linux/x11/WindowAlpha.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/EarlyHold.h"
#include "backends/linux/x11/PropertyValues.h"
#include "backends/linux/x11/X11Desktop.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace backends {

void WindowAlpha::begin(Beginning beginning)
{
    if (auto const held = m_context.earlyHold.take(m_window))
        takeOver(held->hasEmptyShape);
    else if (beginning == Beginning::Held)
        hold();
}

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
    noteOwnOpacity(m_context.earlyHold.takeOwnOpacity(m_window));
    m_isHeld = false;
    apply();
}

void WindowAlpha::handleRead(std::uint32_t opacity) { noteWish(opacity, std::exchange(m_writtenOpacity, opacity)); }

void WindowAlpha::noteWish(std::uint32_t opacity, std::uint32_t expected)
{
    if (opacity == expected || opacity == 0)
        return;
    // None as before tells nothing: it may have been read before the early hold, and that knows of a later wish.
    if (std::exchange(m_ownOpacity, opacity) != opacity)
        m_isOwnOpacityRead = true;
    apply();
}

void WindowAlpha::noteOwnOpacity(std::optional<std::uint32_t> opacity)
{
    // One that was read since is later.
    if (opacity.value_or(0) == 0 || m_isOwnOpacityRead)
        return;
    m_ownOpacity = *opacity;
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
    auto const opacity = static_cast<std::uint32_t>(std::llround(alpha * m_ownOpacity));
    auto const before = std::exchange(m_writtenOpacity, opacity);
    if (before == opacity)
        return;
    auto& connection = m_context.connection;
    auto const property = connection.atom(AtomName::NET_WM_WINDOW_OPACITY);
    // A wish that nobody here has heard of is written over, so what stood there is asked for.
    connection.askProperty(m_window, property, [this, weak = m_owner, before](auto const* reply) {
        auto const owner = weak.lock();
        if (owner && reply)
            noteWish(firstWordOf(reply).value_or(opaque), before);
    });
    m_willWrite();
    backends::writeOpacity(connection.wire(), m_window, property, opacity);
}

void WindowAlpha::writeShape(bool isEmpty)
{
    auto& connection = m_context.connection;
    if (!connection.shape().isPresent || std::exchange(m_hasEmptyShape, isEmpty) == isEmpty)
        return;
    backends::writeShape(connection.wire(), m_window, isEmpty);
}

} // namespace backends
