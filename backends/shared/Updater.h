#pragma once

#include "backends/shared/UpdateMemory.h"
#include "backends/shared/UpdateUserDriver.h"
#include "backends/shared/UpdateWorld.h"
#include "platform/log/OSLog.h"
#include "platform/sparkle/SPUUpdater.h"
#include "platform/sparkle/SPUUpdaterDelegate.h"

#include <memory>
#include <optional>
#include <string>

namespace backends {

// The course of updates, from the first start of an app to the new version in its place: when to look, what to offer,
// what to ask the user. It reads no byte and draws nothing. Main thread only.
class Updater final : public platform::SPUUpdater, public std::enable_shared_from_this<Updater> {
public:
    // World and driver must outlive it.
    Updater(UpdateWorld& world, UpdateUserDriver& driver, platform::OSLog log,
        std::weak_ptr<platform::SPUUpdaterDelegate> delegate)
        : m_world(world)
        , m_memory(world)
        , m_driver(driver)
        , m_log(std::move(log))
        , m_delegate(std::move(delegate))
    {
    }

    bool canCheckForUpdates() const override;
    void start();
    void checkForUpdates();

private:
    enum class State { Stopped, Idle, Checking, AskingPermission, Offering, Downloading, Installing };
    enum class Manner { Scheduled, ByUser };

    // Calls a member later, unless the updater has gone or the session is another one by then.
    template<typename Function>
    auto inThisSession(Function function);

    UpdateSettings settings() const;
    void startCycle();
    void schedule();
    void askPermission();
    void check(Manner manner);
    void handleFeed(platform::Result<UpdateFeed> const& feed);
    void offer(UpdateItem const& item, std::optional<platform::NSError> const& problem);
    void showOffer(UpdateItem const& item, std::optional<platform::NSError> const& problem);
    void handleChoice(UpdateItem const& item, UpdateUserDriver::Choice choice, bool isReplaceable);
    void fetch(UpdateItem const& item);
    void showProgress(UpdateItem const& item, double fraction);
    void install(UpdateItem const& item);
    void showInstalled(UpdateItem const& item);
    void restart();
    void fail(platform::NSError const& error);
    void finish();

    UpdateWorld& m_world;
    UpdateMemory m_memory;
    UpdateUserDriver& m_driver;
    platform::OSLog m_log;
    std::weak_ptr<platform::SPUUpdaterDelegate> m_delegate;
    State m_state = State::Stopped;
    Manner m_manner = Manner::Scheduled;
    // Nobody is bothered with the progress of what nobody asked for.
    bool m_isSilent = false;
    unsigned m_session = 0;
    // Newer than the app that runs, when it has been replaced under way. Empty before.
    std::string m_installedVersion;
    std::shared_ptr<void> m_timer;
};

} // namespace backends
