#pragma once

#include "platform/dispatch/Queue.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace backends {

class EventLoop;

// The line of work that the main thread does from the loop. Work submitted by a piece of work runs in the next turn.
class MainQueue : public platform::Queue {
public:
    explicit MainQueue(EventLoop& loop);

    void async(std::function<void()> work) override;

private:
    bool runTurn();
    std::size_t pendingCount();
    std::function<void()> takeFirst();

    EventLoop& m_loop;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_work;
};

} // namespace backends
