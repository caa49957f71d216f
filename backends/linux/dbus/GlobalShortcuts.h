#pragma once

#include "backends/linux/dbus/BusReturn.h"
#include "backends/linux/dbus/Portal.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace backends {

class EventLoop;

// One shortcut that the desktop itself binds and calls us for: org.freedesktop.portal.GlobalShortcuts. The desktop may
// ask its user, so it is asked as rarely as can be: a binding is kept until another shortcut is wanted, and a user who
// has declined is not asked again. Nothing happens before the first bind. Main thread only.
class GlobalShortcuts {
public:
    enum class State {
        Unasked,
        Absent, // no bus, no portal, or one without shortcuts
        Asking,
        Bound,
        NotBound, // answered, and not bound
        Declined, // by the user
    };
    struct Shortcut {
        // What the desktop knows it by from one start of the app to the next. Shortcuts with one name are the same.
        std::string id;
        // What the desktop tells its user of it.
        std::string description;
        // In the notation of the shortcuts specification of freedesktop.org, "CTRL+ALT+n". May be empty.
        std::string preferredTrigger;
    };
    struct Observer {
        // The state or the trigger.
        std::function<void()> stateDidChange;
        std::function<void(bool isDown)> didPress;
    };

    GlobalShortcuts(EventLoop& loop, std::string busAddress, std::string appID, platform::OSLog log, Observer observer);

    // Wanted from now on, in place of any other.
    void bind(Shortcut const& shortcut);
    // Not wanted: presses are not told. The desktop keeps the binding, and the same shortcut takes it up again.
    void release() { m_isWanted = false; }

    State state() const { return m_state; }
    // The desktop's own words for what the user must press. Empty unless bound.
    std::string const& trigger() const { return m_trigger; }

private:
    void ask();
    void connect();
    void busMayBeBack();
    void leavePortal();
    void usePortal(std::unique_ptr<Portal> portal);
    void createSession();
    void listShortcuts();
    void bindShortcuts();
    // Bound when ours is among them and has a trigger.
    bool adopt(platform::Value const& shortcuts);
    void fail(char const* step, Portal::Response const& response);
    void endSession();
    void portalDidGo();
    void portalDidCome();
    void handlePress(BusMessage const& signal, bool isDown);
    void handleChange(BusMessage const& signal);
    void setState(State state, std::string trigger = {});

    EventLoop& m_loop;
    std::string m_busAddress;
    std::string m_appID;
    platform::OSLog m_log;
    Observer m_observer;
    State m_state = State::Unasked;
    std::string m_trigger;
    // Of the session, or of the attempt to have one.
    std::optional<Shortcut> m_shortcut;
    bool m_isWanted = false;
    // Nobody is there to ask: it is asked again when a portal comes.
    bool m_waitsForPortal = false;
    // Of the press that is not released yet.
    std::optional<std::uint64_t> m_pressedAt;
    // The object path. Empty without one.
    std::string m_session;
    std::unique_ptr<Portal> m_portal;
    BusSlot m_activated, m_deactivated, m_changed, m_closed;
    BusSlot m_versionQuestion;
    Portal::Request m_request;
    BusReturn m_return;
};

} // namespace backends
