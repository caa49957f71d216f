#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <utility>

namespace paneweld_tests {

// How long the slowest of many rounds took. It is printed at the end, because a limit that is kept tells little.
class Stopwatch {
public:
    using Clock = std::chrono::steady_clock;

    explicit Stopwatch(std::string name)
        : m_name(std::move(name))
    {
    }
    ~Stopwatch()
    {
        auto const milliseconds = std::chrono::duration<double, std::milli>(m_slowest).count();
        std::printf("%s: %.1f ms, the slowest of %d\n", m_name.c_str(), milliseconds, m_rounds);
    }
    Stopwatch(Stopwatch const&) = delete;
    Stopwatch& operator=(Stopwatch const&) = delete;

    void start() { m_start = Clock::now(); }
    void stop()
    {
        m_slowest = std::max(m_slowest, Clock::now() - m_start);
        ++m_rounds;
    }
    Clock::duration slowest() const { return m_slowest; }

private:
    std::string m_name;
    Clock::time_point m_start;
    Clock::duration m_slowest {};
    int m_rounds = 0;
};

} // namespace paneweld_tests
