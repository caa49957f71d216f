#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "platform/dispatch/Clock.h"

#include <functional>

namespace backends {

// Runs something once, when so much time has passed in the world: the sleep of the machine counts (CLOCK_BOOTTIME).
// Dropping it takes it back; the work may drop it. Main thread only.
class WallTimer {
public:
    WallTimer(EventLoop& loop, platform::Seconds delay, std::function<void()> work);
    ~WallTimer();
    WallTimer(WallTimer const&) = delete;
    WallTimer& operator=(WallTimer const&) = delete;

private:
    int m_descriptor;
    LoopSource m_source;
};

} // namespace backends
