#pragma once

#include <functional>
#include <string>
#include <thread>

namespace backends {

// Starts a thread of ours in the host's process. Signals are the host's, so it takes none. The kernel keeps 15 bytes of
// the name, which debuggers show.
std::thread startBackgroundThread(std::string const& name, std::function<void()> work);

} // namespace backends
