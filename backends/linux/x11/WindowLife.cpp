#include "backends/linux/x11/WindowLife.h"

#include "backends/linux/x11/X11Desktop.h"

#include <utility>

namespace backends {

namespace {

// Values of WM_STATE.
constexpr std::uint32_t normalState = 1;
constexpr std::uint32_t iconicState = 3;

} // namespace

WindowLife::WindowLife(X11Context const& context, Observer observer)
    : m_context(context)
    , m_observer(std::move(observer))
{
}

WindowLife::Presence WindowLife::presence() const
{
    return m_presence == Presence::Shown && m_isHidden ? Presence::Iconified : m_presence;
}

void WindowLife::handleMap()
{
    // Without a window manager nobody else tells that the client took it away and brought it back.
    bool const isQuickReturn = m_isUndecided && !m_wasReparented && !m_context.desktop.hasWindowManager();
    if (isQuickReturn)
        withdraw();
    m_isUndecided = false;
    auto const before = std::exchange(m_presence, Presence::Shown);
    m_observer.wasMapped(before);
    notePresence();
}

void WindowLife::handleHidden(bool isHidden)
{
    m_isHidden = isHidden;
    notePresence();
}

void WindowLife::handleUnmap()
{
    if (m_presence != Presence::Shown)
        return;
    m_isUndecided = true;
    m_wasReparented = false;
    m_observer.askManagedState();
}

void WindowLife::handleWithdrawMessage() { withdraw(); }

void WindowLife::handleDestroy() { withdraw(); }

void WindowLife::handleManagedState(std::optional<std::uint32_t> state)
{
    m_managedState = state;
    bool const isIconic = state == iconicState;
    if (m_isUndecided)
        decide();
    else if (m_presence == Presence::Withdrawn && isIconic)
        m_presence = Presence::Iconified;
    else if (m_presence == Presence::Iconified && !isIconic && state != normalState)
        withdraw();
    notePresence();
}

void WindowLife::decide()
{
    if (m_managedState == iconicState) {
        m_isUndecided = false;
        m_presence = Presence::Iconified;
        return;
    }
    // The window manager has not had its say yet; it will change the state.
    if (m_managedState == normalState && m_context.desktop.hasWindowManager())
        return;
    withdraw();
}

void WindowLife::withdraw()
{
    m_isUndecided = false;
    if (std::exchange(m_presence, Presence::Withdrawn) == Presence::Withdrawn)
        return;
    m_wasIconified = false;
    m_observer.wasWithdrawn();
}

void WindowLife::notePresence()
{
    bool const wasIconified = std::exchange(m_wasIconified, presence() == Presence::Iconified);
    if (wasIconified && presence() == Presence::Shown)
        m_observer.cameBack();
}

} // namespace backends
