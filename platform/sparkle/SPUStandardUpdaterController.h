#pragma once

#include "platform/sparkle/SPUUpdater.h"
#include "platform/sparkle/SPUUpdaterDelegate.h"

namespace platform {

enum class StartingUpdater { No, Yes };

// An updater together with the world's usual way of talking to the user about updates. Main thread only.
class SPUStandardUpdaterController {
public:
    virtual ~SPUStandardUpdaterController() = default;

    // From the next turn of the main queue on, checks run by the schedule. Once is enough, twice is harmless. What is
    // wrong with the app's settings is told to the user and the log.
    virtual void startUpdater() = 0;
    // The user asks for a check: what comes of it is shown in any case. When something is shown already, that comes to
    // the front again; while a check is under way nothing happens but a line in the log.
    virtual void checkForUpdates() = 0;
    virtual SPUUpdater& updater() = 0;
};

} // namespace platform
