#include "backends/linux/loop/MainQueue.h"

#include "backends/linux/loop/EventLoop.h"

namespace backends {

MainQueue::MainQueue(EventLoop& loop)
    : m_loop(loop)
{
    m_loop.atEndOfTurn([this] { return runTurn(); });
}

void MainQueue::async(std::function<void()> work)
{
    {
        std::lock_guard const lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    m_loop.wakeUp();
}

bool MainQueue::runTurn()
{
    auto const count = pendingCount();
    if (count == 0)
        return false;
    platform::Queue::Entry const entry(*this);
    for (std::size_t i = 0; i < count; ++i) {
        // Empty when a nested loop inside an earlier piece has done this one.
        auto const work = takeFirst();
        if (!work)
            break;
        work();
    }
    return true;
}

std::size_t MainQueue::pendingCount()
{
    std::lock_guard const lock(m_mutex);
    return m_work.size();
}

std::function<void()> MainQueue::takeFirst()
{
    std::lock_guard const lock(m_mutex);
    if (m_work.empty())
        return {};
    auto work = std::move(m_work.front());
    m_work.pop_front();
    return work;
}

} // namespace backends
