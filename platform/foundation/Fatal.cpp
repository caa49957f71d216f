#include "platform/foundation/Fatal.h"

#include <cstdio>
#include <cstdlib>

namespace platform {

void fatalError(std::string_view text)
{
    std::fprintf(stderr, "fatal error: %.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stderr);
    std::abort();
}

} // namespace platform
