#pragma once

#include <chrono>
#include <functional>
#include <poll.h>
#include <vector>

namespace paneweld_tests {

// A host's loop in a test: each turn does what there is to do, and what comes next waits for one of the descriptors.
// False when the condition does not hold in time.
inline bool pump(
    std::vector<int> const& descriptors, std::function<void()> const& turn, std::function<bool()> const& condition)
{
    constexpr std::chrono::seconds patience { 20 };
    // What other threads and programs do makes nothing of ours readable.
    constexpr int lookAgainMilliseconds = 5;
    std::vector<pollfd> waits;
    for (int const descriptor : descriptors)
        waits.push_back({ descriptor, POLLIN, 0 });
    auto const end = std::chrono::steady_clock::now() + patience;
    while (true) {
        turn();
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() > end)
            return false;
        poll(waits.data(), waits.size(), lookAgainMilliseconds);
    }
}

} // namespace paneweld_tests
