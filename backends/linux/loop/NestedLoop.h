#pragma once

#include <functional>
#include <utility>

namespace backends {

class EventLoop;

// The wait inside a call that has to block, such as a modal dialog, while the loops of this process go on. Waits may
// nest. For the thread of the loop only.
class NestedLoop {
public:
    explicit NestedLoop(EventLoop& loop)
        : m_loop(loop)
    {
    }

    // One turn of the host's own loop, which waits until something happens and carries ours as it always does. While
    // there is none only our side runs, and the host's windows stand still.
    void setIteration(std::function<void()> iterate) { m_iterate = std::move(iterate); }
    bool hasIteration() const { return static_cast<bool>(m_iterate); }

    void runUntil(std::function<bool()> const& isDone);

private:
    EventLoop& m_loop;
    std::function<void()> m_iterate;
};

} // namespace backends
