#pragma once

#include "backends/linux/dbus/Bus.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/log/OSLog.h"

#include <array>
#include <functional>
#include <optional>
#include <string>

namespace backends {

// The desktop's list of status items (org.kde.StatusNotifierWatcher) as one item sees it: whoever keeps the list is
// told of the item, once, and whether somebody shows what is on it is known. Keepers come, go and hand over at any
// time. Main thread only.
class StatusWatcher {
public:
    enum class State {
        NoWatcher, // nobody keeps a list that has the item
        WatcherWithoutHost, // on the list, which nobody shows
        Shown,
    };

    // The item is told by its name on the bus, or the path of its object on this connection. The observer is called
    // from the loop.
    StatusWatcher(
        Bus& bus, EventLoop& loop, platform::OSLog log, std::string itemName, std::function<void()> stateDidChange);

    State state() const { return m_state; }

private:
    using Answered = std::function<void(BusMessage const&)>;

    void greet();
    void ownerDidChange(std::string const& owner);
    void setOwner(std::string const& owner);
    BusSlot tell(std::string const& keeper, Answered answered);
    void registerItem();
    bool isRegistered() const { return !m_owner.empty() && m_taker == m_owner; }
    void wasTakenIn();
    void registrationDidFail(std::string const& error);
    void listenForHosts();
    void askForHost();
    void hostsDidChange();
    void update();

    Bus& m_bus;
    EventLoop& m_loop;
    platform::OSLog m_log;
    std::string m_itemName;
    std::function<void()> m_stateDidChange;
    State m_state = State::NoWatcher;
    // The connection that keeps the list. Empty for nobody, and until the bus has said who it is.
    std::string m_owner;
    // The connection that has taken the item in.
    std::string m_taker;
    // Absent until the owner has said so, or could not although it has the item.
    std::optional<bool> m_hasHost;
    int m_failures = 0;
    BusSlot m_ownerChanges, m_ownerQuestion, m_lost;
    std::array<BusSlot, 3> m_hostChanges;
    // Under way to whoever has the name.
    std::optional<BusSlot> m_greeting;
    BusSlot m_registration;
    // Under way to the owner.
    std::optional<BusSlot> m_hostQuestion;
    LoopSource m_retry;
};

} // namespace backends
