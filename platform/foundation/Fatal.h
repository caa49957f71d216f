#pragma once

#include <string_view>

namespace platform {

// Ends the process after writing "fatal error: " and the text to standard error: for our own mistakes and a caller's
// broken contract, in every build type. Never for what the world does.
[[noreturn]] void fatalError(std::string_view text);

} // namespace platform
