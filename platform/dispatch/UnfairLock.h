#pragma once

#include <mutex>

namespace platform {

// Mutual exclusion for closures of a few instructions (os_unfair_lock). Not recursive, and held across nothing that
// could wait, send or post.
class UnfairLock {
public:
    template<typename Closure>
    decltype(auto) with(Closure&& closure)
    {
        std::lock_guard const lock(m_mutex);
        return std::forward<Closure>(closure)();
    }

private:
    std::mutex m_mutex;
};

} // namespace platform
