#include "backends/memory/MemoryUpdates.h"

#include "platform/foundation/Bundle.h"

#include <algorithm>
#include <utility>

namespace backends {

using platform::NSError;

void MemoryUpdates::holdNetwork(bool isHeld)
{
    m_isNetworkHeld = isHeld;
    if (isHeld)
        return;
    for (auto& work : std::exchange(m_held, {}))
        m_mainQueue.async(std::move(work));
}

void MemoryUpdates::whenNetworkIsThere(std::function<void()> work)
{
    if (m_isNetworkHeld)
        m_held.push_back(std::move(work));
    else
        m_mainQueue.async(std::move(work));
}

std::shared_ptr<void> MemoryUpdates::after(platform::Seconds delay, std::function<void()> work)
{
    auto timer = std::make_shared<Timer>(Timer { m_now + delay.count(), std::move(work) });
    m_timers.push_back(timer);
    return timer;
}

void MemoryUpdates::letTimePass(platform::Seconds time)
{
    auto const end = m_now + time.count();
    // One at a time, because what a timer does changes which is next. What is due asks for the network, not for time.
    while (true) {
        std::shared_ptr<Timer> next;
        for (auto const& weak : m_timers) {
            auto const timer = weak.lock();
            if (timer && timer->work && timer->time <= end && (!next || timer->time < next->time))
                next = timer;
        }
        if (!next)
            break;
        m_now = std::max(m_now, next->time);
        auto const work = std::exchange(next->work, nullptr);
        work();
    }
    std::erase_if(m_timers, [](auto const& weak) { return weak.expired(); });
    m_now = end;
}

std::optional<platform::Value> MemoryUpdates::setting(std::string const& key) const
{
    if (auto const found = m_kept.find(key); found != m_kept.end())
        return platform::Value(found->second);
    auto const app = m_bundles.mainBundle();
    if (!app)
        return std::nullopt;
    if (key == "CFBundleIdentifier") {
        auto const identifier = app->bundleIdentifier();
        return identifier ? std::optional<platform::Value>(*identifier) : std::nullopt;
    }
    return app->infoValue(key);
}

void MemoryUpdates::keep(std::string const& key, std::string const& value)
{
    if (value.empty())
        m_kept.erase(key);
    else
        m_kept[key] = value;
}

std::string MemoryUpdates::kept(std::string const& key) const
{
    auto const found = m_kept.find(key);
    return found == m_kept.end() ? std::string() : found->second;
}

void MemoryUpdates::fetchFeed(UpdateSettings const& settings, FeedAnswer answered)
{
    m_ledger.note("update feed " + settings.feedURL);
    whenNetworkIsThere([this, settings, answered = std::move(answered)] {
        if (settings.feedURL.empty())
            answered(NSError { "Updates", 1001, "the app names no feed of updates" });
        else if (settings.publicKeys.empty())
            answered(NSError { "Updates", 1002, "the app has no key to check updates with" });
        else
            answered(m_feed);
    });
}

void MemoryUpdates::checkWhetherReplaceable(Answer answered)
{
    m_mainQueue.async([this, answered = std::move(answered)] {
        answered(m_notReplaceable ? std::optional(NSError { "Updates", 4000, *m_notReplaceable }) : std::nullopt);
    });
}

void MemoryUpdates::fetchUpdate(
    UpdateItem const& item, UpdateSettings const& settings, Progress progress, Answer answered)
{
    m_ledger.note("update fetch " + item.url);
    m_cancelled = [answered] { answered(NSError { "Updates", updateCancelled, "cancelled" }); };
    whenNetworkIsThere(
        [this, item, keys = settings.publicKeys, progress = std::move(progress), answered = std::move(answered)] {
            // Cancelled meanwhile, and answered.
            if (!std::exchange(m_cancelled, nullptr))
                return;
            progress(1);
            if (std::find(keys.begin(), keys.end(), item.signature) == keys.end())
                answered(NSError { "Updates", 3001, "the update is not signed with a key of the app" });
            else
                answered(std::nullopt);
        });
}

void MemoryUpdates::installUpdate(UpdateItem const& item, Answer answered)
{
    m_mainQueue.async([this, version = item.version, answered = std::move(answered)] {
        m_ledger.note("update install " + version);
        m_installed = version;
        answered(std::nullopt);
    });
}

std::optional<NSError> MemoryUpdates::restart()
{
    if (m_notStartable)
        return NSError { "Updates", 4008, *m_notStartable };
    m_ledger.note("update restart");
    return std::nullopt;
}

void MemoryUpdates::cancel()
{
    if (auto cancelled = std::exchange(m_cancelled, nullptr))
        m_mainQueue.async(std::move(cancelled));
}

void MemoryUpdates::ask(std::function<void(Choice)> answered)
{
    if (m_choices.empty()) {
        ++m_openPrompts;
        return;
    }
    auto const choice = m_choices.front();
    m_choices.pop_front();
    m_mainQueue.async([answered = std::move(answered), choice] { answered(choice); });
}

void MemoryUpdates::showPermissionRequest(std::function<void(std::optional<bool>)> answered)
{
    m_ledger.note("update shown permission");
    if (m_permissions.empty()) {
        ++m_openPrompts;
        return;
    }
    auto const isAllowed = m_permissions.front();
    m_permissions.pop_front();
    m_mainQueue.async([answered = std::move(answered), isAllowed] { answered(isAllowed); });
}

void MemoryUpdates::showUpdate(
    UpdateItem const& item, std::optional<NSError> const& problem, std::function<void(Choice)> answered)
{
    m_ledger.note("update shown offer " + item.version + (item.releaseNotesURL.empty() ? "" : " with notes")
        + (problem ? " but " + problem->localizedDescription : std::string()));
    ask(std::move(answered));
}

void MemoryUpdates::showInformation(UpdateItem const& item, std::function<void(Choice)> answered)
{
    m_ledger.note("update shown information " + item.version);
    ask(std::move(answered));
}

void MemoryUpdates::showProgress(UpdateItem const& item, double fraction, std::function<void()> cancelled)
{
    m_ledger.note("update shown progress " + item.version + " " + ledgerText(fraction));
    m_pressedCancel = std::move(cancelled);
}

void MemoryUpdates::showInstalled(UpdateItem const& item, std::function<void()> restartChosen)
{
    m_ledger.note("update shown installed " + item.version);
    m_pressedRestart = std::move(restartChosen);
}

void MemoryUpdates::pressRestart()
{
    if (auto const pressed = m_pressedRestart)
        m_mainQueue.async(pressed);
}

void MemoryUpdates::pressCancel()
{
    if (auto const pressed = m_pressedCancel)
        m_mainQueue.async(pressed);
}

} // namespace backends
