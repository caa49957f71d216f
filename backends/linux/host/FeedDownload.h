#pragma once

#include "backends/linux/host/Download.h"
#include "backends/shared/UpdateItem.h"
#include "backends/shared/UpdateSettings.h"
#include "platform/foundation/Result.h"

#include <string>

namespace backends {

// Reads the bytes of a feed. A signature that it carries has to be good, and it has to carry one where the app demands
// it. Any thread.
platform::Result<UpdateFeed> feedFromBytes(std::string const& bytes, UpdateSettings const& settings);

// Fetches the app's feed and reads it. Blocks; any thread.
platform::Result<UpdateFeed> downloadFeed(UpdateSettings const& settings, Download download);

} // namespace backends
