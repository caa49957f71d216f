#include "backends/linux/x11/WindowStates.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11Desktop.h"

#include <algorithm>
#include <array>

namespace backends {

namespace {

constexpr std::uint32_t allDesktops = 0xFFFFFFFF;
// A pager or the like asks, which window managers follow without ideas of their own (EWMH, "Source indication").
constexpr std::uint32_t fromPager = 2;
constexpr std::uint32_t removeState = 0;
constexpr std::uint32_t addState = 1;

} // namespace

void WindowStates::setLevel(platform::WindowLevel level)
{
    bool const didFloat = floats();
    m_level = level;
    if (floats() != didFloat)
        tellAbove();
}

void WindowStates::setStepsAside(bool stepsAside)
{
    bool const didFloat = floats();
    m_stepsAside = stepsAside;
    if (floats() != didFloat)
        tellAbove();
}

void WindowStates::setCollectionBehavior(platform::WindowCollectionBehavior behavior)
{
    bool const wasOnAllDesktops = isOnAllDesktops();
    m_behavior = behavior;
    if (isOnAllDesktops() != wasOnAllDesktops)
        tellDesktop();
}

bool WindowStates::isOnAllDesktops() const { return (m_behavior & platform::collectionBehaviorCanJoinAllSpaces) != 0; }

bool WindowStates::fillsScreen() const
{
    constexpr std::array filling { AtomName::NET_WM_STATE_MAXIMIZED_VERT, AtomName::NET_WM_STATE_MAXIMIZED_HORZ,
        AtomName::NET_WM_STATE_FULLSCREEN };
    return std::any_of(filling.begin(), filling.end(), [this](auto name) { return isCurrent(name); });
}

bool WindowStates::isCurrent(AtomName name) const
{
    return std::find(m_current.begin(), m_current.end(), m_context.connection.atom(name)) != m_current.end();
}

void WindowStates::tellAgain()
{
    // Also that it is not above any more: who was told so may have gone before it heard.
    if (floats() || m_hasFloated)
        tellAbove();
    if (isOnAllDesktops())
        tellDesktop();
}

void WindowStates::tellAbove()
{
    m_hasFloated = m_hasFloated || floats();
    setState(AtomName::NET_WM_STATE_ABOVE, floats());
}

void WindowStates::tellDesktop()
{
    setState(AtomName::NET_WM_STATE_STICKY, isOnAllDesktops());
    auto& connection = m_context.connection;
    auto const desktop = isOnAllDesktops() ? allDesktops : m_context.desktop.currentDesktop();
    if (m_isManaged) {
        m_context.desktop.tellManager(m_window, AtomName::NET_WM_DESKTOP, { desktop, fromPager });
        return;
    }
    auto const property = connection.atom(AtomName::NET_WM_DESKTOP);
    if (isOnAllDesktops())
        xcb_change_property(
            connection.wire(), XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_CARDINAL, 32, 1, &desktop);
    else
        xcb_delete_property(connection.wire(), m_window, property);
}

void WindowStates::setState(AtomName name, bool isSet)
{
    auto& connection = m_context.connection;
    auto const state = connection.atom(name);
    if (m_isManaged) {
        m_context.desktop.tellManager(
            m_window, AtomName::NET_WM_STATE, { isSet ? addState : removeState, state, 0, fromPager });
        return;
    }
    if (isCurrent(name) == isSet)
        return;
    if (isSet)
        m_current.push_back(state);
    else
        std::erase(m_current, state);
    xcb_change_property(connection.wire(), XCB_PROP_MODE_REPLACE, m_window, connection.atom(AtomName::NET_WM_STATE),
        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(m_current.size()), m_current.data());
}

} // namespace backends
