#include "backends/linux/loop/SerialQueue.h"

#include <csignal>
#include <pthread.h>

namespace backends {

namespace {

// The kernel keeps 15 bytes of a thread's name.
constexpr std::size_t maximumThreadName = 15;

} // namespace

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
    // Signals are the host's: a thread inherits the mask, so all are blocked while it is made.
    sigset_t all {};
    sigset_t before {};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    m_thread = std::thread([this, line = m_line] {
        platform::Queue::Entry const entry(*this);
        run(*line);
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(m_thread.native_handle(), m_label.substr(0, maximumThreadName).c_str());
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
