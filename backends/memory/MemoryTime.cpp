#include "backends/memory/MemoryTime.h"

#include <utility>

namespace backends {

void MemoryQueue::async(std::function<void()> work)
{
    std::lock_guard const lock(m_mutex);
    m_work.push_back(std::move(work));
}

bool MemoryQueue::isEmpty() const
{
    std::lock_guard const lock(m_mutex);
    return m_work.empty();
}

void MemoryQueue::runTurn()
{
    std::deque<std::function<void()>> turn;
    {
        std::lock_guard const lock(m_mutex);
        turn = std::exchange(m_work, {});
    }
    Entry const entry(*this);
    for (auto const& work : turn)
        work();
}

} // namespace backends
