#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "platform/dispatch/Clock.h"

#include <functional>

namespace backends {

// The beat of the display, kept by a timer at its refresh rate. There is no timer while it stands still.
class DisplayTicker : public platform::FrameTicker {
public:
    DisplayTicker(EventLoop& loop, platform::Clock& clock);

    void start(std::function<void()> tick) override;
    void stop() override;

    // In hertz. Holds from the next frame on; what no display has is ignored.
    void setRefreshRate(double rate);
    double refreshRate() const { return 1 / m_interval.count(); }

private:
    void scheduleNext();
    void fire();

    EventLoop& m_loop;
    platform::Clock& m_clock;
    platform::Seconds m_interval { 1.0 / 60 };
    platform::Seconds m_deadline {};
    std::function<void()> m_tick;
    LoopSource m_timer;
};

} // namespace backends
