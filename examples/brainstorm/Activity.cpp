#include "examples/brainstorm/Activity.h"
#include "examples/brainstorm/Gtk.h"
#include "paneweld/host.hpp"

#include <array>
#include <iomanip>
#include <sstream>

namespace ideas {

namespace {

constexpr std::size_t entryLimit = 400;
constexpr std::string_view ownPrefix = "Paneweld.";

std::string describe(platform::Value const& value)
{
    if (auto const number = value.asDouble(); number && value.kind() == platform::Value::Kind::Double) {
        std::ostringstream text;
        text << *number;
        return text.str();
    }
    return value.description();
}

std::string describe(std::optional<platform::Dictionary> const& userInfo)
{
    std::string text;
    for (auto const& [key, value] : userInfo.value_or(platform::Dictionary {})) {
        text += text.empty() ? "" : ", ";
        text += std::string(key) + " = " + describe(value);
    }
    return text;
}

Activity::Origin originOf(std::string const& name)
{
    using paneweld::NotificationName;
    static std::array const fromApp { &NotificationName::requestFileAccess, &NotificationName::executeMailScript,
        &NotificationName::updateGlobalNewBrainstormShortcut, &NotificationName::brainstormWindowPinStateDidChange,
        &NotificationName::updateMenuItemTitle, &NotificationName::brainstormWindowPreferredHeightDidChange,
        &NotificationName::openFileURL };
    if (!name.starts_with(ownPrefix))
        return Activity::Origin::WindowSystem;
    for (auto* const accessor : fromApp) {
        if (accessor().rawValue() == name)
            return Activity::Origin::App;
    }
    return Activity::Origin::Plugin;
}

} // namespace

Activity::Activity()
    : m_start(g_get_monotonic_time())
{
}

bool Activity::writeTo(std::string const& path)
{
    // Behind what is there: an app that an update has restarted goes on with its file.
    m_file.open(path, std::ios::out | std::ios::app);
    return m_file.is_open();
}

void Activity::hear(platform::Notification const& notification)
{
    auto const& name = notification.name.rawValue();
    auto const time = static_cast<double>(g_get_monotonic_time() - m_start) / G_USEC_PER_SEC;
    auto const details = describe(notification.userInfo);
    if (m_file.is_open()) {
        // Flushed by line, so that whoever waits for a line in the file need not wait for the next one.
        m_file << std::fixed << std::setprecision(3) << std::setw(8) << time << "  " << name << " {" << details << '}'
               << std::endl;
    }

    bool const isOwn = name.starts_with(ownPrefix);
    m_entries.push_back({ time, originOf(name), isOwn ? name.substr(ownPrefix.size()) : name, details });
    if (m_entries.size() > entryLimit)
        m_entries.pop_front();
    if (m_listener)
        m_listener(m_entries.back());
}

} // namespace ideas
