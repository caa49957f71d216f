#include "backends/linux/host/ProcessName.h"

#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/Text.h"

namespace backends {

std::string processName(std::uint32_t process)
{
    auto const name = readFile("/proc/" + std::to_string(process) + "/comm");
    return name ? std::string(platform::trimmed(name.value(), "\n")) : std::string();
}

} // namespace backends
