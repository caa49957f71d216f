#pragma once

#include "backends/linux/x11/Atoms.h"
#include "backends/linux/x11/X11Context.h"
#include "platform/appkit/NSWindow.h"

#include <cstdint>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// What a window wishes from the window manager beside its frame: to stay above the others and to be on every desktop.
// The wishes are what was set here, never read back, and told again whenever a window manager may have forgotten them.
class WindowStates {
public:
    WindowStates(X11Context const& context, xcb_window_t window)
        : m_context(context)
        , m_window(window)
    {
    }

    platform::WindowLevel level() const { return m_level; }
    void setLevel(platform::WindowLevel level);
    // While a window steps aside it is not above the others, whatever its level.
    void setStepsAside(bool stepsAside);
    platform::WindowCollectionBehavior collectionBehavior() const { return m_behavior; }
    void setCollectionBehavior(platform::WindowCollectionBehavior behavior);

    // Messages to the window manager are for managed windows only; before, a window says it by its own properties.
    void setManaged(bool isManaged) { m_isManaged = isManaged; }
    // All wishes once more.
    void tellAgain();

    // Maximized, in one direction or both, or fullscreen.
    bool fillsScreen() const;

    void handleRead(std::vector<std::uint32_t> states) { m_current = std::move(states); }

private:
    bool floats() const { return m_level >= platform::windowLevelFloating && !m_stepsAside; }
    bool isOnAllDesktops() const;
    void tellAbove();
    void tellDesktop();
    void setState(AtomName state, bool isSet);
    bool isCurrent(AtomName state) const;

    X11Context const& m_context;
    xcb_window_t m_window;
    platform::WindowLevel m_level = platform::windowLevelNormal;
    platform::WindowCollectionBehavior m_behavior = 0;
    bool m_stepsAside = false;
    bool m_hasFloated = false;
    bool m_isManaged = false;
    // _NET_WM_STATE as it stands.
    std::vector<std::uint32_t> m_current;
};

} // namespace backends
