#include "platform/Version.h"

namespace platform {

char const* libraryVersion() { return PANEWELD_VERSION; }

} // namespace platform
