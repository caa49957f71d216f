#pragma once

#include "backends/linux/dbus/Bus.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/dispatch/Clock.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace backends {

// One notification at a time on the user's desktop (Desktop Notifications Specification 1.2). The next one takes the
// place of the one before. A lasting one outlives the program that shows it: the next such program shows it again.
// Main thread only.
class Notifications {
public:
    struct Notice {
        std::string title {};
        std::string body {};
        // What the user may press: names of ours, and texts in the user's language. "default" is a press on the notice
        // itself.
        std::vector<std::pair<std::string, std::string>> actions {};
        // Stays until it is answered.
        bool isLasting = false;
    };
    // The name of the action, or empty when the notice was closed without one.
    using Answer = std::function<void(std::string const& action)>;

    // A desktop that begins anew takes some seconds.
    static constexpr platform::Seconds usualPatience { 60 };

    // The identifier is that of the desktop entry, for its icon. When the program that shows a lasting notice ends, and
    // no other comes with so much patience, the bus is asked to start one; where it cannot the notice counts as closed.
    Notifications(EventLoop& loop, std::string busAddress, std::string appName, std::string appIdentifier,
        platform::OSLog log, platform::Seconds patience = usualPatience);

    // Where there is nobody to show it, the log says so, and it counts as closed. Never inside the call.
    void show(Notice const& notice, Answer answered);
    void close();

private:
    bool connect();
    void send();
    void handleShown(BusMessage const& reply);
    void handleAction(BusMessage const& signal);
    void handleClosed(BusMessage const& signal);
    void handleServerChange(std::string const& before, std::string const& after);
    void handleLoss();
    void complain(std::string const& reason);
    bool isOurs(BusMessage const& signal) const;
    void answer(std::string const& action);

    EventLoop& m_loop;
    std::string m_busAddress;
    std::string m_appName;
    std::string m_appIdentifier;
    platform::OSLog m_log;
    platform::Seconds m_patience;
    std::unique_ptr<Bus> m_bus;
    BusSlot m_lost;
    bool m_isLost = false;
    BusSlot m_actions;
    BusSlot m_closings;
    BusSlot m_serverChanges;
    BusSlot m_showing;
    // The number of the notice that is shown, and by whom; 0 for none.
    std::uint32_t m_shown = 0;
    std::string m_server;
    Notice m_notice;
    // The server has not said yet which number the last one got. The next waits for that, to take its place.
    bool m_isAsking = false;
    bool m_isNextWaiting = false;
    bool m_isWanted = false;
    // The log says once that nobody shows anything, not for every hundredth of a download.
    bool m_hasComplained = false;
    LoopSource m_nobodyThere;
    // For another program that shows what the one before took along.
    LoopSource m_wait;
    Answer m_answered;
};

} // namespace backends
