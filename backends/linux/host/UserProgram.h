#pragma once

#include "platform/foundation/Result.h"

#include <chrono>
#include <string>
#include <vector>

namespace backends {

// A program of the user's that was started and has not been waited for. Whoever takes it over waits for the descriptor
// to be readable, then for the process, and closes the descriptor.
struct RunningProgram {
    int process = -1;
    int descriptor = -1;
};

// Starts a program with the user's environment and waits until the deadline for how it goes: openers end at once, and
// where they are the mail program itself they run for as long as the user wants. Blocks. Any thread.
//
// The first argument is the program, looked up in PATH. Fails when it cannot be started or ends with a failure. A
// program that has ended well has no process any more.
platform::Result<RunningProgram> startUserProgram(
    std::vector<std::string> arguments, std::chrono::steady_clock::time_point deadline);

// Once the descriptor is readable: leaves no zombie.
void reap(RunningProgram const& program);

} // namespace backends
