#include "tests/linux/StatusWatcherStandIn.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto service = "org.kde.StatusNotifierWatcher";
constexpr auto object = "/StatusNotifierWatcher";

} // namespace

StatusWatcherStandIn::StatusWatcherStandIn(std::string busAddress, Manners manners)
    : BusPeer(std::move(busAddress), service, SD_BUS_NAME_ALLOW_REPLACEMENT | SD_BUS_NAME_REPLACE_EXISTING)
    , m_manners(manners)
{
    start();
    onThread([this] {
        EXPECT_GE(sd_bus_add_match(bus(), nullptr,
                      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged'", nameDidChange, this),
            0);
    });
}

int StatusWatcherStandIn::nameDidChange(sd_bus_message* message, void* self, sd_bus_error*)
{
    char const* name = nullptr;
    char const* before = nullptr;
    char const* after = nullptr;
    auto& watcher = *static_cast<StatusWatcherStandIn*>(self);
    if (sd_bus_message_read(message, "sss", &name, &before, &after) >= 0 && !*after) {
        std::lock_guard const lock(watcher.mutex());
        std::erase_if(watcher.m_items, [&](auto const& item) { return item.owner == name; });
    }
    return 0;
}

int StatusWatcherStandIn::handleCall(sd_bus_message* message)
{
    char const* argument = nullptr;
    if (m_manners.neverAnswers)
        return 1;
    if (sd_bus_message_is_method_call(message, service, "RegisterStatusNotifierItem")) {
        EXPECT_STREQ(sd_bus_message_get_path(message), object);
        sd_bus_message_read(message, "s", &argument);
        note(std::string("Register ") + argument + " " + sd_bus_message_get_sender(message));
        std::lock_guard const lock(mutex());
        if (m_manners.refusals > 0) {
            --m_manners.refusals;
            return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_OBJECT, "No such object");
        }
        m_items.push_back({ argument, sd_bus_message_get_sender(message) });
        return sd_bus_reply_method_return(message, "");
    }
    if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get")) {
        note("hosts?");
        std::lock_guard const lock(mutex());
        if (m_manners.hostRefusals > 0) {
            --m_manners.hostRefusals;
            return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_OBJECT, "No such object");
        }
        return sd_bus_reply_method_return(message, "v", "b", static_cast<int>(m_manners.hasHost));
    }
    return 0;
}

std::vector<std::string> StatusWatcherStandIn::items() const
{
    std::lock_guard const lock(mutex());
    std::vector<std::string> names;
    for (auto const& item : m_items)
        names.push_back(item.name);
    return names;
}

void StatusWatcherStandIn::setHost(bool hasHost)
{
    onThread([this, hasHost] {
        {
            std::lock_guard const lock(mutex());
            m_manners.hasHost = hasHost;
        }
        auto const* const signal = hasHost ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered";
        EXPECT_GE(sd_bus_emit_signal(bus(), object, service, signal, ""), 0);
    });
}

} // namespace paneweld_tests
