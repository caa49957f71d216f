#include "backends/linux/loop/DisplayTicker.h"

#include <algorithm>
#include <cmath>

namespace backends {

namespace {

constexpr double slowestDisplay = 20;
constexpr double fastestDisplay = 1000;

} // namespace

DisplayTicker::DisplayTicker(EventLoop& loop, platform::Clock& clock)
    : m_loop(loop)
    , m_clock(clock)
{
}

void DisplayTicker::start(std::function<void()> tick)
{
    m_tick = std::move(tick);
    m_deadline = m_clock.now();
    scheduleNext();
}

void DisplayTicker::stop()
{
    m_timer.end();
    m_tick = nullptr;
}

void DisplayTicker::setRefreshRate(double rate)
{
    // A virtual display says 0.
    if (!(rate >= slowestDisplay && rate <= fastestDisplay))
        return;
    m_interval = platform::Seconds { 1 / rate };
}

void DisplayTicker::scheduleNext()
{
    // Frames that were missed are skipped, and the beat is kept.
    auto const missed = std::floor((m_clock.now() - m_deadline) / m_interval);
    m_deadline += m_interval * (std::max(missed, 0.0) + 1);
    m_timer = m_loop.at(m_deadline, [this] { fire(); });
}

void DisplayTicker::fire()
{
    scheduleNext();
    // A copy, because the tick may stop or restart the ticker.
    auto const tick = m_tick;
    if (tick)
        tick();
}

} // namespace backends
