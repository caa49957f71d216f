#pragma once

#include "platform/foundation/NSError.h"

#include <optional>

namespace platform {

class SPUUpdater;

// Why an update check runs.
enum class SPUUpdateCheck { Updates, UpdatesInBackground, UpdateInformation };

// Whoever has a say in what an updater does. Main thread only.
class SPUUpdaterDelegate {
public:
    virtual ~SPUUpdaterDelegate() = default;

    // Before each check. An error refuses it and says why; absent allows it.
    virtual std::optional<NSError> mayPerformUpdateCheck(SPUUpdater& updater, SPUUpdateCheck check) = 0;
};

} // namespace platform
