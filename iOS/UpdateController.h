#pragma once

#include "platform/runtime/Class.h"
#include "platform/sparkle/SPUStandardUpdaterController.h"

#include <memory>
#include <optional>

namespace platform {
class Platform;
}

namespace paneweld {

// Keeps the app up to date, on behalf of a host that makes it by name and starts it once. What to look for and how to
// talk to the user is the updater's; a world without one never finds an update. Main thread only.
class UpdateController : public platform::NSObject, public platform::SPUUpdaterDelegate {
public:
    static std::shared_ptr<UpdateController> create(platform::Platform& platform);
    ~UpdateController() override;

    void startUpdater();
    void checkForUpdates();
    // Asked of the updater each time.
    bool canCheckForUpdates() const;

    // Every check may run.
    std::optional<platform::NSError> mayPerformUpdateCheck(
        platform::SPUUpdater& updater, platform::SPUUpdateCheck check) override;

    // "PaneweldUpdateController"; the maker is added where it is exported.
    static platform::Class const& runtimeClass();
    platform::Class const* classDescription() const override { return &runtimeClass(); }

private:
    explicit UpdateController(platform::Platform& platform);

    platform::Platform& m_platform;
    std::unique_ptr<platform::SPUStandardUpdaterController> m_updaterController;
};

} // namespace paneweld
