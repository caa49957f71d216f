#pragma once

#include <chrono>
#include <functional>

namespace platform {

using Seconds = std::chrono::duration<double>;

// Time that never runs backwards, counted from an arbitrary start.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Seconds now() const = 0;
};

// Calls back once for every frame that the display shows, as long as it is running, on the main thread. A ticker that
// stands still wakes nobody.
class FrameTicker {
public:
    virtual ~FrameTicker() = default;
    virtual void start(std::function<void()> tick) = 0;
    virtual void stop() = 0;
};

} // namespace platform
