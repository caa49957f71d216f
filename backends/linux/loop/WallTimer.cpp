#include "backends/linux/loop/WallTimer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sys/timerfd.h>
#include <unistd.h>

namespace backends {

WallTimer::WallTimer(EventLoop& loop, platform::Seconds delay, std::function<void()> work)
    : m_descriptor(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK))
{
    constexpr long nanosecondsOfSecond = 1'000'000'000;
    auto const seconds = std::max(delay.count(), 0.0);
    itimerspec time {};
    time.it_value.tv_sec = static_cast<time_t>(std::floor(seconds));
    time.it_value.tv_nsec
        = std::min(std::lround((seconds - std::floor(seconds)) * nanosecondsOfSecond), nanosecondsOfSecond - 1);
    // All zeros would mean never.
    if (time.it_value.tv_sec == 0)
        time.it_value.tv_nsec = std::max(time.it_value.tv_nsec, 1L);
    timerfd_settime(m_descriptor, 0, &time, nullptr);
    m_source = loop.whenReadable(m_descriptor, [descriptor = m_descriptor, work = std::move(work)] {
        std::uint64_t count = 0;
        // Read, or it would stay readable for ever.
        if (read(descriptor, &count, sizeof count) > 0)
            work();
    });
}

WallTimer::~WallTimer()
{
    m_source.end();
    close(m_descriptor);
}

} // namespace backends
