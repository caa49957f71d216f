#pragma once

#include "platform/dispatch/Clock.h"

namespace backends {

// The machine's clock that is never set (CLOCK_MONOTONIC). Any thread.
class MonotonicClock : public platform::Clock {
public:
    platform::Seconds now() const override;
};

} // namespace backends
