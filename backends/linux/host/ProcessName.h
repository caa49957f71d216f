#pragma once

#include <cstdint>
#include <string>

namespace backends {

// What the program of a process is called (proc(5), "comm": at most 15 bytes). Empty when there is no such process.
std::string processName(std::uint32_t process);

} // namespace backends
