#pragma once

#include "backends/linux/dbus/GlobalShortcuts.h"
#include "backends/linux/x11/X11HotKeys.h"
#include "backends/shared/HotKeyTable.h"
#include "backends/shared/HotKeyTruthTeller.h"
#include "platform/carbon/EventHotKeys.h"
#include "platform/dispatch/Queue.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace backends {

class EventLoop;
class X11World;

// The hot-key service of a Linux session. It grabs on the X server; in a Wayland session, where that server does not
// see every key, it also asks the desktop to bind the latest registration, and lets its grab go when it has. What it
// says of itself is what is the case, not what was asked for. Main thread only.
class LinuxHotKeys : public platform::EventHotKeys {
public:
    // Who has a combination: asked when the server refuses it, answered later, empty when nobody says.
    using FindHolder = std::function<void(
        std::uint32_t keyCode, std::uint32_t modifiers, std::function<void(std::string const& holder)> found)>;

    struct Session {
        // Null without an X server.
        X11World* x11 = nullptr;
        bool isWayland = false;
        // What the desktop calls the app, and what it tells the user of a shortcut.
        std::string appID {};
        std::string description {};
        platform::HotKeyModifierKeys modifierKeys {};
        FindHolder findHolder {};
    };

    LinuxHotKeys(Session session, EventLoop& loop, platform::Queue& mainQueue, platform::OSLog log);
    ~LinuxHotKeys() override;

    Registered registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id) override;

    platform::HotKeyTruth truth() const override;

private:
    class Registration;
    using Handle = X11HotKeys::Handle;
    // Where the presses of a registration come from: one place at a time.
    enum class Road { None, Server, Desktop };
    struct Entry {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        platform::EventHotKeyID id {};
        Road road = Road::None;
        bool isDown = false;
        std::optional<std::string> holder {};
    };

    void remove(Handle handle);
    // Puts every registration on the road that is open to it.
    void updateRoads();
    Road roadOf(Handle handle) const;
    // True when it was on another one.
    bool setRoad(Handle handle, Entry& entry, Road road);
    void didPress(Handle handle, bool isDown);
    GlobalShortcuts::Shortcut shortcut(Entry const& entry) const;
    std::string preferredTrigger(Entry const& entry) const;

    platform::HotKeyAvailability availability() const;
    platform::HotKeyResult result(Handle handle) const;
    void truthMayHaveChanged();
    void findHolder();
    void didFindHolder(Handle handle, std::string const& holder);

    Session m_session;
    std::unique_ptr<GlobalShortcuts> m_portal;
    HotKeyTable m_table;
    // In the order of registration: handles only grow.
    std::map<Handle, Entry> m_entries;
    Handle m_lastHandle = 0;
    HotKeyTruthTeller m_teller;
    // Ends with this object: what outlives it holds it weakly.
    std::shared_ptr<LinuxHotKeys*> m_life;
};

} // namespace backends
