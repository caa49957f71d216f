#pragma once

#include "backends/linux/dbus/Notifications.h"
#include "backends/shared/UpdateUserDriver.h"

#include <functional>
#include <string>
#include <string_view>

namespace backends {

// Talks to the user about updates through notifications of the desktop. Texts are looked up in the app's table
// "Sparkle", by what they say in English.
class UpdateNotices final : public UpdateUserDriver {
public:
    // The text of the app's language, or the English one.
    using Localize = std::function<std::string(std::string_view english)>;

    UpdateNotices(Notifications& notifications, std::string appName, Localize localize)
        : m_notifications(notifications)
        , m_appName(std::move(appName))
        , m_localize(std::move(localize))
    {
    }

    void showPermissionRequest(std::function<void(std::optional<bool> isAllowed)> answered) override;
    void showUpdate(UpdateItem const& item, std::optional<platform::NSError> const& problem,
        std::function<void(Choice)> answered) override;
    void showInformation(UpdateItem const& item, std::function<void(Choice)> answered) override;
    void showProgress(UpdateItem const& item, double fraction, std::function<void()> cancelled) override;
    void showInstalled(UpdateItem const& item, std::function<void()> restartChosen) override;
    void showNoUpdate() override;
    void showError(platform::NSError const& error) override;
    void bringToFront() override;
    void dismiss() override { m_notifications.close(); }

private:
    std::string text(std::string_view english, std::string const& first = {}, std::string const& second = {}) const;
    void show(Notifications::Notice notice, Notifications::Answer answered = {});
    void offer(Notifications::Notice notice, UpdateItem const& item, std::function<void(Choice)> answered);

    Notifications& m_notifications;
    std::string m_appName;
    Localize m_localize;
    // For bringing it to the front.
    Notifications::Notice m_last;
    Notifications::Answer m_lastAnswered;
};

} // namespace backends
