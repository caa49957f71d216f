#pragma once

#include <functional>
#include <optional>

namespace paneweld_tests {

// What became of a piece of work in a process of its own that is killed at one of its calls to the kernel.
struct KilledWork {
    bool wasKilled = false;
    // Calls that change files, which it had begun by its end.
    int changes = 0;
};

// Does the work in a child process, which is killed before the kernel carries out the call that would change files for
// the time after `changesBefore` ones. Programs that the work starts are not counted and not killed. Absent where the
// machine lets nobody look at a child's calls.
std::optional<KilledWork> killBeforeChange(int changesBefore, std::function<void()> const& work);

} // namespace paneweld_tests
