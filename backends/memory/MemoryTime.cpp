#include "backends/memory/MemoryTime.h"

#include <utility>

namespace backends {

void MemoryQueue::async(std::function<void()> work)
{
    std::lock_guard const lock(m_mutex);
    m_work.push_back(std::move(work));
}

bool MemoryQueue::isAsleep(platform::Seconds now) const
{
    // Sums of hundredths are not exact.
    constexpr platform::Seconds rounding { 1e-9 };
    return now + rounding < m_wakingTime;
}

bool MemoryQueue::isIdle(platform::Seconds now) const
{
    std::lock_guard const lock(m_mutex);
    return m_work.empty() || isAsleep(now);
}

void MemoryQueue::runTurn(platform::Seconds now)
{
    if (isAsleep(now))
        return;
    std::deque<std::function<void()>> turn;
    {
        std::lock_guard const lock(m_mutex);
        turn = std::exchange(m_work, {});
    }
    Entry const entry(*this);
    bool const wasRunning = std::exchange(m_isRunning, true);
    while (!turn.empty() && !isAsleep(now)) {
        auto const work = std::move(turn.front());
        turn.pop_front();
        work();
    }
    m_isRunning = wasRunning;
    // What a sleep has cut off stays ahead of what came meanwhile.
    std::lock_guard const lock(m_mutex);
    m_work.insert(m_work.begin(), turn.begin(), turn.end());
}

} // namespace backends
