#pragma once

#include "backends/linux/UpdateNotices.h"
#include "backends/linux/dbus/Notifications.h"
#include "backends/linux/host/KeptValues.h"
#include "backends/linux/host/Relaunch.h"
#include "backends/linux/host/UpdateInstaller.h"
#include "backends/linux/loop/SerialQueue.h"
#include "backends/shared/UpdateWorld.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/Bundles.h"
#include "platform/log/OSLog.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

class EventLoop;

// Updates of this app on this machine: feeds and archives from the web, the app's own file or folder, the user's
// desktop. What takes long runs on a line of work of its own. Main thread only.
class LinuxUpdates final : public UpdateWorld {
public:
    struct Surroundings {
        EventLoop& loop;
        platform::Queue& mainQueue;
        platform::Bundles& bundles;
        platform::NSWorkspace& workspace;
        std::string appName {};
        std::string busAddress {};
        // Asks the app to end.
        std::function<void()> terminate {};
        // The user's, best first.
        std::vector<std::string> languages {};
    };

    LinuxUpdates(Surroundings surroundings, platform::OSLog log);
    ~LinuxUpdates() override;

    UpdateUserDriver& userDriver() { return m_notices; }

    double now() const override;
    std::shared_ptr<void> after(platform::Seconds delay, std::function<void()> work) override;
    void soon(std::function<void()> work) override { m_around.mainQueue.async(std::move(work)); }
    std::optional<platform::Value> setting(std::string const& key) const override;
    void keep(std::string const& key, std::string const& value) override;
    std::string systemVersion() const override;
    void openPage(std::string const& url) override;
    void fetchFeed(UpdateSettings const& settings, FeedAnswer answered) override;
    void checkWhetherReplaceable(Answer answered) override;
    void fetchUpdate(
        UpdateItem const& item, UpdateSettings const& settings, Progress progress, Answer answered) override;
    void installUpdate(UpdateItem const& item, Answer answered) override;
    std::optional<platform::NSError> restart() override;
    void cancel() override { *m_isCancelled = true; }

private:
    // Does the work elsewhere and answers here.
    template<typename Work, typename Handler>
    void elsewhere(Work work, Handler answered);

    KeptValues& kept() const;
    std::string identifier() const;
    std::string userAgent() const;
    platform::Result<UpdateTarget> target() const;
    std::string localized(std::string_view english) const;
    std::optional<platform::NSError> whyTooOld(UpdateSettings const& settings, UpdateFeed const& feed);

    Surroundings m_around;
    platform::OSLog m_log;
    Notifications m_notifications;
    UpdateNotices m_notices;
    mutable std::unique_ptr<KeptValues> m_kept;
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
    // How this app was started, and so will be its next version.
    Launch m_launch;
    // From an item's download to its place. Shared with the work that is done elsewhere.
    std::shared_ptr<UpdateInstaller> m_installer;
    // Last, so that its work has ended before anything that it uses.
    SerialQueue m_background { "updates" };
};

} // namespace backends
