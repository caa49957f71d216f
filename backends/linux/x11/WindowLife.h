#pragma once

#include "backends/linux/x11/X11Context.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace backends {

// Whether a window is there for the user: on the screen, iconified, or withdrawn (ICCCM 4.1.4). An unmapped window may
// be any of the last two, or only on its way from one window manager to the next; its state tells, a little later.
class WindowLife {
public:
    enum class Presence { Withdrawn, Iconified, Shown };

    struct Observer {
        // It was mapped; what it was before.
        std::function<void(Presence)> wasMapped;
        // It was iconified and is on the screen again.
        std::function<void()> cameBack;
        // It was on the screen or iconified, and is neither any more.
        std::function<void()> wasWithdrawn;
        // Asks for the window's managed state; the answer comes by handleManagedState.
        std::function<void()> askManagedState;
    };

    WindowLife(X11Context const& context, Observer observer);

    Presence presence() const;
    bool isWithdrawn() const { return m_presence == Presence::Withdrawn; }

    void handleMap();
    void handleUnmap();
    // The client's own word that it took the window away (a synthetic UnmapNotify on the root).
    void handleWithdrawMessage();
    void handleReparent() { m_wasReparented = true; }
    void handleManagedState(std::optional<std::uint32_t> state);
    // Some window managers hide an iconified window without unmapping it (_NET_WM_STATE_HIDDEN).
    void handleHidden(bool isHidden);
    void handleDestroy();

private:
    void decide();
    void withdraw();
    // Tells of a return, whichever of the two signs of it comes last: the map, or the state that is taken away.
    void notePresence();

    X11Context const& m_context;
    Observer m_observer;
    Presence m_presence = Presence::Withdrawn;
    std::optional<std::uint32_t> m_managedState;
    bool m_isHidden = false;
    bool m_wasIconified = false;
    // It was unmapped, and what that means is not known yet.
    bool m_isUndecided = false;
    bool m_wasReparented = false;
};

} // namespace backends
