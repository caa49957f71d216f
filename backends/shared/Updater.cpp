#include "backends/shared/Updater.h"

#include "backends/shared/UpdateChoice.h"
#include "backends/shared/UpdateSchedule.h"

namespace backends {

using platform::NSError;
using platform::Seconds;
using Choice = UpdateUserDriver::Choice;

template<typename Function>
auto Updater::inThisSession(Function function)
{
    return [weak = weak_from_this(), session = m_session, function](auto const&... arguments) {
        auto const self = weak.lock();
        if (self && self->m_session == session)
            function(*self, arguments...);
    };
}

bool Updater::canCheckForUpdates() const
{
    switch (m_state) {
    case State::Idle:
    case State::AskingPermission:
    case State::Offering:
        return true;
    case State::Downloading:
    case State::Installing:
        return !m_isSilent;
    case State::Stopped:
    case State::Checking:
        break;
    }
    return false;
}

UpdateSettings Updater::settings() const
{
    auto current = UpdateSettings::from([this](std::string const& key) { return m_world.setting(key); });
    if (!m_installedVersion.empty())
        current.hostVersion = m_installedVersion;
    return current;
}

void Updater::start()
{
    if (m_state != State::Stopped)
        return;
    constexpr Seconds delayOfStartAlert { 4 };
    auto const app = settings();
    if (app.bundleIdentifier.empty() || app.hostVersion.empty()) {
        NSError const error { "Updates", 1000,
            app.bundleIdentifier.empty() ? "the app has no bundle identifier" : "the app has no version" };
        m_log.error("the updater does not start: %{public}s", { error.localizedDescription });
        m_timer = m_world.after(
            delayOfStartAlert, inThisSession([error](Updater& self) { self.m_driver.showError(error); }));
        return;
    }
    m_state = State::Idle;
    m_world.soon(inThisSession([](Updater& self) { self.startCycle(); }));
}

void Updater::startCycle()
{
    if (m_state != State::Idle)
        return;
    if (settings().checksAutomatically) {
        schedule();
        return;
    }
    // At its first start an app has other things to say, and without a feed there is nothing to ask about.
    if (!m_memory.hasLaunchedBefore())
        m_memory.noteLaunch();
    else if (!settings().feedURL.empty())
        askPermission();
}

void Updater::askPermission()
{
    m_state = State::AskingPermission;
    m_driver.showPermissionRequest(inThisSession([](Updater& self, std::optional<bool> isAllowed) {
        if (isAllowed)
            self.m_memory.allowChecks(*isAllowed);
        self.finish();
    }));
}

void Updater::schedule()
{
    m_timer.reset();
    auto const current = settings();
    auto const delay = delayOfNextCheck(
        current.checksAutomatically.value_or(false), current.checkInterval, m_memory.sinceLastCheck());
    if (delay)
        m_timer
            = m_world.after(Seconds { *delay }, inThisSession([](Updater& self) { self.check(Manner::Scheduled); }));
}

void Updater::checkForUpdates()
{
    switch (m_state) {
    case State::Stopped:
        m_log.error("no check for updates: the updater is not started");
        return;
    case State::Idle:
        check(Manner::ByUser);
        return;
    case State::AskingPermission:
    case State::Offering:
        m_driver.bringToFront();
        return;
    case State::Downloading:
    case State::Installing:
        if (!m_isSilent) {
            m_driver.bringToFront();
            return;
        }
        break;
    case State::Checking:
        break;
    }
    m_log.error("no check for updates: one is under way");
}

void Updater::check(Manner manner)
{
    m_timer.reset();
    ++m_session;
    m_state = State::Checking;
    m_manner = manner;
    m_isSilent = false;
    m_memory.noteCheck();
    if (auto const delegate = m_delegate.lock()) {
        auto const kind = manner == Manner::ByUser ? platform::SPUUpdateCheck::Updates
                                                   : platform::SPUUpdateCheck::UpdatesInBackground;
        if (auto const refusal = delegate->mayPerformUpdateCheck(*this, kind)) {
            fail(*refusal);
            return;
        }
    }
    m_world.fetchFeed(settings(), inThisSession([](Updater& self, auto const& feed) { self.handleFeed(feed); }));
}

void Updater::handleFeed(platform::Result<UpdateFeed> const& feed)
{
    m_memory.noteCheck();
    if (!feed) {
        fail(feed.error());
        return;
    }
    auto const current = settings();
    auto item = chooseUpdate(feed.value(), m_memory.circumstances(current, m_manner == Manner::ByUser));
    if (!item) {
        if (m_manner == Manner::ByUser)
            m_driver.showNoUpdate();
        finish();
        return;
    }
    m_log.info("version %{public}s is available", { item->version });
    if (!current.showsReleaseNotes)
        item->releaseNotesURL.clear();
    if (isInformationalFor(*item, current.hostVersion)) {
        m_state = State::Offering;
        m_driver.showInformation(
            *item, inThisSession([item](Updater& self, Choice choice) { self.handleChoice(*item, choice, false); }));
        return;
    }
    // Before anything is downloaded, so that nobody waits for what cannot come to anything.
    m_world.checkWhetherReplaceable(
        inThisSession([item](Updater& self, auto const& problem) { self.offer(*item, problem); }));
}

void Updater::offer(UpdateItem const& item, std::optional<NSError> const& problem)
{
    if (problem)
        m_log.error(
            "version %{public}s cannot be installed: %{public}s", { item.version, problem->localizedDescription });
    auto const current = settings();
    if (m_manner == Manner::Scheduled && current.updatesAutomatically && !problem
        && !isMajorFor(item, current.hostVersion)) {
        m_isSilent = true;
        fetch(item);
        return;
    }
    showOffer(item, problem);
}

void Updater::showOffer(UpdateItem const& item, std::optional<NSError> const& problem)
{
    m_state = State::Offering;
    m_driver.showUpdate(item, problem, inThisSession([item, problem](Updater& self, Choice choice) {
        if (choice != Choice::ReadNotes) {
            self.handleChoice(item, choice, !problem);
            return;
        }
        self.m_world.openPage(item.releaseNotesURL);
        self.showOffer(item, problem);
    }));
}

void Updater::handleChoice(UpdateItem const& item, Choice choice, bool isReplaceable)
{
    if (m_state != State::Offering)
        return;
    if (choice == Choice::Install && isReplaceable) {
        fetch(item);
        return;
    }
    if (choice == Choice::Install && !item.link.empty())
        m_world.openPage(item.link);
    if (choice == Choice::Skip)
        m_memory.skip(item, settings().hostVersion);
    finish();
}

void Updater::fetch(UpdateItem const& item)
{
    m_state = State::Downloading;
    showProgress(item, 0);
    m_world.fetchUpdate(item, settings(),
        inThisSession([item](Updater& self, double fraction) { self.showProgress(item, fraction); }),
        inThisSession([item](Updater& self, auto const& error) {
            if (error)
                self.fail(*error);
            else
                self.install(item);
        }));
}

void Updater::showProgress(UpdateItem const& item, double fraction)
{
    if (m_isSilent || m_state != State::Downloading)
        return;
    m_driver.showProgress(item, fraction, inThisSession([](Updater& self) {
        if (self.m_state == State::Downloading)
            self.m_world.cancel();
    }));
}

void Updater::install(UpdateItem const& item)
{
    m_state = State::Installing;
    m_world.installUpdate(item, inThisSession([item](Updater& self, auto const& error) {
        if (error) {
            self.fail(*error);
            return;
        }
        self.m_log.info("version %{public}s is installed", { item.version });
        self.m_installedVersion = item.version;
        self.showInstalled(item);
        self.finish();
    }));
}

void Updater::showInstalled(UpdateItem const& item)
{
    // The session is over by the time that somebody answers.
    m_driver.showInstalled(item, [weak = weak_from_this()] {
        if (auto const self = weak.lock())
            self->restart();
    });
}

void Updater::restart()
{
    // While something is under way it would be cut off.
    if (m_state != State::Idle)
        return;
    if (auto const problem = m_world.restart()) {
        m_log.error("no restart: %{public}s", { problem->localizedDescription });
        m_driver.showError(*problem);
    }
}

void Updater::fail(NSError const& error)
{
    bool const isCancelled = error.domain == "Updates" && error.code == updateCancelled;
    if (!isCancelled)
        m_log.error("no update: %{public}s", { error.localizedDescription });
    // What nobody asked for fails in the log alone; the next check comes by the schedule.
    bool const isSomebodyWaiting = m_manner == Manner::ByUser || (m_state != State::Checking && !m_isSilent);
    if (isCancelled)
        m_driver.dismiss();
    else if (isSomebodyWaiting)
        m_driver.showError(error);
    finish();
}

void Updater::finish()
{
    ++m_session;
    m_state = State::Idle;
    m_isSilent = false;
    schedule();
}

} // namespace backends
