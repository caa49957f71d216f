#pragma once

#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSError.h"

#include <optional>
#include <string>
#include <vector>

namespace backends {

// How a program is started: its file, its arguments (the first one is its name), and its environment as "NAME=value".
struct Launch {
    std::string program {};
    std::vector<std::string> arguments {};
    std::vector<std::string> environment {};

    // As this process was started itself. Its file is the one that it had then: ask before an update takes its place.
    static Launch ofThisProcess();
};

// Starts a program as soon as a process, which may be this one, has ended; in the same folder, and with nothing open
// but the three standard descriptors. When the process outlives the patience, nothing is started any more. Returns at
// once. Fails when there is no such program now. Any thread.
std::optional<platform::NSError> launchAfter(int process, Launch launch, platform::Seconds patience);

} // namespace backends
