#include "backends/linux/UpdateNotices.h"

#include <cmath>
#include <utility>

namespace backends {

namespace {

constexpr auto install = "install";
constexpr auto later = "later";
constexpr auto skip = "skip";
constexpr auto cancel = "cancel";
constexpr auto allow = "allow";
constexpr auto refuse = "refuse";
constexpr auto restart = "restart";
// A press on the notice itself; some desktops draw a button for it.
constexpr auto readNotes = "default";

void replace(std::string& text, std::string_view mark, std::string const& value)
{
    if (auto const place = text.find(mark); place != std::string::npos)
        text.replace(place, mark.size(), value);
}

} // namespace

std::string UpdateNotices::text(std::string_view english, std::string const& first, std::string const& second) const
{
    auto found = m_localize(english);
    replace(found, "%1$@", first);
    replace(found, "%2$@", second);
    return found;
}

void UpdateNotices::show(Notifications::Notice notice, Notifications::Answer answered)
{
    m_last = notice;
    m_lastAnswered = answered;
    m_notifications.show(notice, std::move(answered));
}

void UpdateNotices::bringToFront()
{
    // A server shows a notice anew that it is told again.
    m_notifications.show(m_last, m_lastAnswered);
}

void UpdateNotices::showPermissionRequest(std::function<void(std::optional<bool>)> answered)
{
    Notifications::Notice notice;
    notice.title = text("Check for updates automatically?");
    notice.body = text("Should %1$@ look for new versions from time to time?", m_appName);
    notice.actions = { { allow, text("Check Automatically") }, { refuse, text("Don’t Check") } };
    notice.isLasting = true;
    show(std::move(notice), [answered = std::move(answered)](std::string const& action) {
        bool const isAnswer = action == allow || action == refuse;
        answered(isAnswer ? std::optional(action == allow) : std::nullopt);
    });
}

void UpdateNotices::offer(Notifications::Notice notice, UpdateItem const& item, std::function<void(Choice)> answered)
{
    notice.actions.emplace_back(later, text("Later"));
    notice.actions.emplace_back(skip, text("Skip This Version"));
    // Last, for a desktop that has place for three buttons.
    if (!item.releaseNotesURL.empty())
        notice.actions.emplace_back(readNotes, text("Release Notes"));
    notice.isLasting = true;
    show(std::move(notice), [answered = std::move(answered)](std::string const& action) {
        if (action == install)
            answered(Choice::Install);
        else if (action == skip)
            answered(Choice::Skip);
        else
            answered(action == readNotes ? Choice::ReadNotes : Choice::Later);
    });
}

void UpdateNotices::showUpdate(
    UpdateItem const& item, std::optional<platform::NSError> const& problem, std::function<void(Choice)> answered)
{
    Notifications::Notice notice;
    notice.title = text("%1$@ %2$@ is available", m_appName, item.displayVersion);
    if (problem)
        notice.body = text("It cannot be installed: %1$@", problem->localizedDescription);
    else
        notice.actions.emplace_back(install, text("Install Update"));
    if (problem && !item.link.empty())
        notice.actions.emplace_back(install, text("Learn More"));
    offer(std::move(notice), item, std::move(answered));
}

void UpdateNotices::showInformation(UpdateItem const& item, std::function<void(Choice)> answered)
{
    Notifications::Notice notice;
    notice.title = text("%1$@ %2$@ is available", m_appName, item.displayVersion);
    if (!item.link.empty())
        notice.actions.emplace_back(install, text("Learn More"));
    offer(std::move(notice), {}, std::move(answered));
}

void UpdateNotices::showProgress(UpdateItem const& item, double fraction, std::function<void()> cancelled)
{
    Notifications::Notice notice;
    notice.title = text("Downloading %1$@ %2$@", m_appName, item.displayVersion);
    // In words and not as a bar: a desktop that draws the one leaves out all else, and with it the way to cancel.
    notice.body = std::to_string(static_cast<int>(std::floor(fraction * 100))) + " %";
    notice.actions = { { cancel, text("Cancel") } };
    notice.isLasting = true;
    show(std::move(notice), [cancelled = std::move(cancelled)](std::string const& action) {
        // Closing the notice does not end the download.
        if (action == cancel)
            cancelled();
    });
}

void UpdateNotices::showInstalled(UpdateItem const& item, std::function<void()> restartChosen)
{
    Notifications::Notice notice;
    notice.title = text("%1$@ %2$@ is installed", m_appName, item.displayVersion);
    notice.body = text("It is there when %1$@ is started next.", m_appName);
    notice.actions = { { restart, text("Restart Now") } };
    show(std::move(notice), [restartChosen = std::move(restartChosen)](std::string const& action) {
        if (action == restart)
            restartChosen();
    });
}

void UpdateNotices::showNoUpdate()
{
    Notifications::Notice notice;
    notice.title = text("You’re up to date");
    notice.body = text("There is no newer version of %1$@.", m_appName);
    show(std::move(notice));
}

void UpdateNotices::showError(platform::NSError const& error)
{
    Notifications::Notice notice;
    notice.title = text("%1$@ could not be updated", m_appName);
    notice.body = error.localizedDescription;
    show(std::move(notice));
}

} // namespace backends
