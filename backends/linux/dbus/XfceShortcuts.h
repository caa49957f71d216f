#pragma once

#include "backends/linux/host/Accelerator.h"
#include "platform/foundation/Result.h"

#include <chrono>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace backends {

// The settings of Xfce's channel for shortcuts: "/commands/custom/<Alt>F2" with what it does. Anything but a text or
// a boolean is left out.
using XfceSettings = std::vector<std::pair<std::string, std::variant<std::string, bool>>>;

// The shortcuts among them, in their order. What stands under "custom" counts beside what stands under "default",
// unless "custom/override" says that it counts alone.
std::vector<DesktopShortcut> xfceShortcuts(XfceSettings const& settings);

// Asks Xfce's own service for its settings, over a connection of its own to the user's bus, and starts no service.
// Blocks, at most until the deadline. Any thread. Fails with the bus's own words.
platform::Result<XfceSettings> readXfceSettings(std::chrono::steady_clock::time_point deadline);

} // namespace backends
