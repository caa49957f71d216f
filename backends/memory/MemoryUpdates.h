#pragma once

#include "backends/memory/Ledger.h"
#include "backends/shared/UpdateUserDriver.h"
#include "backends/shared/UpdateWorld.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/Bundles.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace backends {

// Updates in a memory world: a feed as data, an installed version as a fact, and a user who answers as prepared. Its
// days pass by hand, apart from the frames of the world's clock.
class MemoryUpdates : public UpdateWorld, public UpdateUserDriver {
public:
    MemoryUpdates(Ledger& ledger, platform::Queue& mainQueue, platform::Bundles& bundles)
        : m_ledger(ledger)
        , m_mainQueue(mainQueue)
        , m_bundles(bundles)
    {
    }

    // What the feed says from now on, or why it cannot be read. The signature of an item is good when it is one of the
    // keys.
    void setFeed(platform::Result<UpdateFeed> feed) { m_feed = std::move(feed); }
    void setNotReplaceable(std::optional<std::string> reason) { m_notReplaceable = std::move(reason); }
    void setNotStartable(std::optional<std::string> reason) { m_notStartable = std::move(reason); }
    // Feeds and downloads are on their way until they are let through.
    void holdNetwork(bool isHeld);
    void letTimePass(platform::Seconds time);

    // The user. Without a prepared answer a question stays open.
    void answerNextUpdate(Choice choice) { m_choices.push_back(choice); }
    void answerNextPermission(std::optional<bool> isAllowed) { m_permissions.push_back(isAllowed); }
    void pressCancel();
    void pressRestart();
    // Questions that the user was asked and has not answered.
    int unansweredPrompts() const { return m_openPrompts; }

    // The version that would start next; empty as long as it is the running one.
    std::string const& installedVersion() const { return m_installed; }
    std::string kept(std::string const& key) const;

    double now() const override { return m_now; }
    std::shared_ptr<void> after(platform::Seconds delay, std::function<void()> work) override;
    void soon(std::function<void()> work) override { m_mainQueue.async(std::move(work)); }
    std::optional<platform::Value> setting(std::string const& key) const override;
    void keep(std::string const& key, std::string const& value) override;
    std::string systemVersion() const override { return "1.0"; }
    void openPage(std::string const& url) override { m_ledger.note("open " + url); }
    void fetchFeed(UpdateSettings const& settings, FeedAnswer answered) override;
    void checkWhetherReplaceable(Answer answered) override;
    void fetchUpdate(
        UpdateItem const& item, UpdateSettings const& settings, Progress progress, Answer answered) override;
    void installUpdate(UpdateItem const& item, Answer answered) override;
    std::optional<platform::NSError> restart() override;
    void cancel() override;

    void showPermissionRequest(std::function<void(std::optional<bool>)> answered) override;
    void showUpdate(UpdateItem const& item, std::optional<platform::NSError> const& problem,
        std::function<void(Choice)> answered) override;
    void showInformation(UpdateItem const& item, std::function<void(Choice)> answered) override;
    void showProgress(UpdateItem const& item, double fraction, std::function<void()> cancelled) override;
    void showInstalled(UpdateItem const& item, std::function<void()> restartChosen) override;
    void showNoUpdate() override { m_ledger.note("update shown none"); }
    void showError(platform::NSError const& error) override
    {
        m_ledger.note("update shown error " + error.localizedDescription);
    }
    void bringToFront() override { m_ledger.note("update to front"); }
    void dismiss() override { m_ledger.note("update dismissed"); }

private:
    struct Timer {
        double time = 0;
        std::function<void()> work {};
    };

    void whenNetworkIsThere(std::function<void()> work);
    void ask(std::function<void(Choice)> answered);

    Ledger& m_ledger;
    platform::Queue& m_mainQueue;
    platform::Bundles& m_bundles;
    // The first of January 2030.
    double m_now = 1893456000;
    std::deque<std::weak_ptr<Timer>> m_timers;
    platform::Result<UpdateFeed> m_feed { UpdateFeed {} };
    std::optional<std::string> m_notReplaceable;
    std::optional<std::string> m_notStartable;
    std::map<std::string, std::string> m_kept;
    std::string m_installed;
    bool m_isNetworkHeld = false;
    std::deque<std::function<void()>> m_held;
    // Answers a fetch under way.
    std::function<void()> m_cancelled;
    std::function<void()> m_pressedCancel;
    std::function<void()> m_pressedRestart;
    std::deque<Choice> m_choices;
    std::deque<std::optional<bool>> m_permissions;
    int m_openPrompts = 0;
};

} // namespace backends
