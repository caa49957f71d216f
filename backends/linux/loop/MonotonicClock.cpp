#include "backends/linux/loop/MonotonicClock.h"

#include <ctime>

namespace backends {

platform::Seconds MonotonicClock::now() const
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return platform::Seconds { static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 };
}

} // namespace backends
