#pragma once

#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Queue.h"

#include <deque>
#include <functional>
#include <mutex>

namespace backends {

// A clock that stands still until somebody moves it.
class MemoryClock : public platform::Clock {
public:
    platform::Seconds now() const override { return m_now; }
    void set(platform::Seconds now) { m_now = now; }

private:
    platform::Seconds m_now {};
};

// A display that shows a frame every hundredth of a second of the moved clock.
class MemoryTicker : public platform::FrameTicker {
public:
    static constexpr platform::Seconds interval { 0.01 };

    void start(std::function<void()> tick) override { m_tick = std::move(tick); }
    void stop() override { m_tick = nullptr; }
    bool isRunning() const { return static_cast<bool>(m_tick); }
    void tick() const
    {
        if (auto const tick = m_tick)
            tick();
    }

private:
    std::function<void()> m_tick;
};

// A queue that runs when it is told to. Work that comes during a turn waits for the next one, and while the queue
// sleeps all of it waits.
class MemoryQueue : public platform::Queue {
public:
    void async(std::function<void()> work) override;

    // Nothing to do, or asleep.
    bool isIdle(platform::Seconds now) const;
    // Runs what was there when the turn began, until a piece of it puts the queue to sleep.
    void runTurn(platform::Seconds now);

    bool isRunning() const { return m_isRunning; }
    void sleepUntil(platform::Seconds time) { m_wakingTime = time; }

private:
    bool isAsleep(platform::Seconds now) const;

    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_work;
    bool m_isRunning = false;
    platform::Seconds m_wakingTime {};
};

} // namespace backends
