#pragma once

#include "backends/shared/Updater.h"
#include "platform/sparkle/SPUStandardUpdaterController.h"

#include <memory>

namespace backends {

// An updater of a world, driven by the world's own way of talking to its user.
class StandardUpdaterController final : public platform::SPUStandardUpdaterController {
public:
    explicit StandardUpdaterController(std::shared_ptr<Updater> updater, platform::StartingUpdater startingUpdater)
        : m_updater(std::move(updater))
    {
        if (startingUpdater == platform::StartingUpdater::Yes)
            m_updater->start();
    }

    void startUpdater() override { m_updater->start(); }
    void checkForUpdates() override { m_updater->checkForUpdates(); }
    platform::SPUUpdater& updater() override { return *m_updater; }

private:
    std::shared_ptr<Updater> m_updater;
};

} // namespace backends
