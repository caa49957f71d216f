#pragma once

#include "backends/linux/loop/SerialQueue.h"
#include "platform/applescript/NSAppleScript.h"
#include "platform/dispatch/Clock.h"

#include <functional>
#include <memory>
#include <mutex>

namespace backends {

// A script whose calls come back in time, whatever they run into. Its language ends code that runs for too long; but
// nothing ends a read of a disk that is gone, or one search for a pattern in a long text. So its code runs on a thread
// of its own, from the first line that loading it runs. A call that does not come back is left behind with its thread
// and its script, to end there when it can, and the next call has a new one: variables that lived from call to call are
// lost then.
class GuardedScript : public platform::NSAppleScript {
public:
    // Makes the script; null with the reason when it cannot. It may be left behind too, and what it makes may outlive
    // this object.
    using Load = std::function<std::shared_ptr<platform::NSAppleScript>(platform::Dictionary& errorInfo)>;

    // Loads it. The time is when code of it must have ended by itself; a moment later it is left behind. Null with the
    // reason.
    static std::shared_ptr<GuardedScript> create(Load load, platform::Seconds time, platform::Dictionary& errorInfo);

    std::optional<platform::NSAppleEventDescriptor> executeAppleEvent(
        platform::NSAppleEventDescriptor const& event, platform::Dictionary& errorInfo) override;

private:
    GuardedScript(Load load, platform::Seconds time);

    bool open(platform::Dictionary& errorInfo);
    // What the work needs it holds itself, for it may be left behind. False with the reason then.
    bool runInTime(std::function<void()> work, platform::Dictionary& errorInfo);

    Load m_load;
    platform::Seconds m_time;
    std::mutex m_mutex;
    // Null after a call was left behind.
    std::shared_ptr<platform::NSAppleScript> m_script;
    std::shared_ptr<SerialQueue> m_queue;
};

} // namespace backends
