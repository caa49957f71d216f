#pragma once

#include "backends/linux/loop/SerialQueue.h"
#include "platform/applescript/NSAppleScript.h"
#include "platform/dispatch/Clock.h"

#include <functional>
#include <memory>
#include <mutex>

namespace backends {

// A script whose calls come back in time, whatever they run into. Its language ends a handler that runs for too long;
// but nothing ends a read of a disk that is gone, or one search for a pattern in a long text. So handlers run on a
// thread of their own. A call that does not come back is left behind with its thread and its script, to end there when
// it can, and the next call has a new one: variables that lived from call to call are lost then.
class GuardedScript : public platform::NSAppleScript {
public:
    // Makes the script; null with the reason when it cannot. What it makes may outlive this object.
    using Load = std::function<std::shared_ptr<platform::NSAppleScript>(platform::Dictionary& errorInfo)>;

    // The time is when a handler must have ended by itself. A moment later it is left behind.
    GuardedScript(std::shared_ptr<platform::NSAppleScript> script, Load load, platform::Seconds time);

    std::optional<platform::NSAppleEventDescriptor> executeAppleEvent(
        platform::NSAppleEventDescriptor const& event, platform::Dictionary& errorInfo) override;

private:
    Load m_load;
    platform::Seconds m_time;
    std::mutex m_mutex;
    // Null after a call was left behind.
    std::shared_ptr<platform::NSAppleScript> m_script;
    std::shared_ptr<SerialQueue> m_queue;
};

} // namespace backends
