#include "backends/linux/loop/SerialQueue.h"

#include "backends/linux/loop/BackgroundThread.h"

namespace backends {

SerialQueue::SerialQueue(std::string label)
    : m_label(std::move(label))
    , m_line(std::make_shared<Line>())
{
}

SerialQueue::~SerialQueue()
{
    {
        std::lock_guard const lock(m_line->mutex);
        m_line->isEnding = true;
    }
    m_line->changed.notify_all();
    if (!m_thread.joinable())
        return;
    if (m_thread.get_id() == std::this_thread::get_id())
        m_thread.detach();
    else
        m_thread.join();
}

void SerialQueue::async(std::function<void()> work)
{
    // The work may end this queue as soon as the lock is free.
    auto const line = m_line;
    {
        std::lock_guard const lock(line->mutex);
        line->work.push_back(std::move(work));
        if (!m_thread.joinable())
            startThread();
    }
    line->changed.notify_one();
}

void SerialQueue::startThread()
{
    m_thread = startBackgroundThread(m_label, [this, line = m_line] {
        platform::Queue::Entry const entry(*this);
        run(*line);
    });
}

void SerialQueue::run(Line& line)
{
    std::unique_lock lock(line.mutex);
    while (true) {
        line.changed.wait(lock, [&] { return line.isEnding || !line.work.empty(); });
        if (line.work.empty())
            return;
        auto work = std::move(line.work.front());
        line.work.pop_front();
        lock.unlock();
        work();
        // Before the lock is taken again, because what the work holds may end here.
        work = nullptr;
        lock.lock();
    }
}

} // namespace backends
