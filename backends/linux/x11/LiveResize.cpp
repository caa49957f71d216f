#include "backends/linux/x11/LiveResize.h"

#include <utility>

namespace backends {

namespace {

// Sizes still come for a moment after the button was let go.
constexpr platform::Seconds quietTime { 0.05 };

} // namespace

LiveResize::LiveResize(EventLoop& loop, std::function<void()> didStart, std::function<void()> didEnd)
    : m_loop(loop)
    , m_didStart(std::move(didStart))
    , m_didEnd(std::move(didEnd))
{
}

void LiveResize::sizeDidChange(bool isButtonDown)
{
    if (!m_isActive && isButtonDown)
        start();
    else if (m_isActive && !isButtonDown)
        waitForQuiet();
}

void LiveResize::start()
{
    if (std::exchange(m_isActive, true))
        return;
    m_didStart();
}

void LiveResize::buttonsWereReleased()
{
    if (m_isActive)
        waitForQuiet();
}

void LiveResize::waitForQuiet()
{
    m_quietTimer = m_loop.after(quietTime, [this] { end(); });
}

void LiveResize::end()
{
    m_quietTimer.end();
    if (std::exchange(m_isActive, false))
        m_didEnd();
}

} // namespace backends
