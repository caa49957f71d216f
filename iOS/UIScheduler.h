#pragma once

#include "platform/dispatch/Queue.h"

#include <functional>

namespace paneweld {

// Runs work on the main queue: at once, on the caller's stack, when the caller is there already, else as soon as the
// main queue comes to it. Work from one thread runs in the order scheduled.
class UIScheduler {
public:
    // Marks the main queue on its first use, so that code running there can be told.
    static UIScheduler const& shared(platform::Queue& mainQueue);

    void schedule(std::function<void()> action) const;

private:
    explicit UIScheduler(platform::Queue& mainQueue);

    platform::Queue& m_mainQueue;
};

} // namespace paneweld
