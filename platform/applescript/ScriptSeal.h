#pragma once

#include "platform/foundation/Result.h"

#include <string>
#include <string_view>

namespace platform {

// How a compiled script lies in its file: the compiler's bytes, then a seal of eight letters, their length and their
// checksum (CRC-64/XZ). Engines do not check compiled code, and damaged code would take the process with it: what is
// not exactly what the build has written is refused.
//
// The seal is no signature. A script stands in the bundle beside the module that runs it, and whoever may write the one
// may write the other.
std::string sealedScript(std::string_view code);

// The compiler's bytes, alive as long as the file's.
Result<std::string_view> unsealedScript(std::string_view file);

} // namespace platform
