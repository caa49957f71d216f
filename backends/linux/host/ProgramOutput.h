#pragma once

#include "platform/foundation/Result.h"

#include <chrono>
#include <string>
#include <vector>

namespace backends {

// Runs a program of the user's system and returns what it wrote to its standard output. Blocks, at most until the
// deadline: then the program ends, with all that it has started. Leaves no zombie, whatever the host does with its own
// children. Any thread.
//
// Fails when the program cannot be started, writes more than some megabytes or does not end in time, with the number of
// the cause (errno(3)); and when the program itself fails, with its own words and the code 0. The first argument is the
// program, looked up in PATH.
platform::Result<std::string> outputOfProgram(
    std::vector<std::string> arguments, std::chrono::steady_clock::time_point deadline);

} // namespace backends
