#include "backends/linux/loop/NestedLoop.h"

#include "backends/linux/loop/EventLoop.h"

#include <poll.h>

namespace backends {

void NestedLoop::runUntil(std::function<bool()> const& isDone)
{
    while (true) {
        // Whoever iterates may leave us out of a turn that runs inside one of ours.
        m_loop.dispatch();
        if (isDone())
            return;
        // A copy: a handler may take the host's loop away in the middle.
        if (auto const iterate = m_iterate) {
            iterate();
            continue;
        }
        pollfd wait { m_loop.pollableDescriptor(), POLLIN, 0 };
        poll(&wait, 1, -1);
    }
}

} // namespace backends
