#include "tests/linux/PortalStandIn.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto object = "/org/freedesktop/portal/desktop";
constexpr auto shortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr auto sessionInterface = "org.freedesktop.portal.Session";

// The text under a key of the dictionary that comes next in the message.
std::map<std::string, std::string> readOptions(sd_bus_message* message)
{
    std::map<std::string, std::string> options;
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        char const* key = nullptr;
        char const* text = nullptr;
        sd_bus_message_read(message, "s", &key);
        if (sd_bus_message_enter_container(message, 'v', "s") > 0) {
            sd_bus_message_read(message, "s", &text);
            sd_bus_message_exit_container(message);
            options[key] = text;
        } else {
            sd_bus_message_skip(message, "v");
        }
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return options;
}

std::string requestPath(sd_bus_message* call, std::string const& token)
{
    std::string sender = sd_bus_message_get_sender(call) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(object) + "/request/" + sender + "/" + token;
}

} // namespace

PortalStandIn::PortalStandIn(std::string busAddress, Manners manners)
    : BusPeer(std::move(busAddress), service)
    , m_manners(std::move(manners))
{
    start();
}

int PortalStandIn::handleCall(sd_bus_message* message)
{
    std::string const member = sd_bus_message_get_member(message);
    std::string const interface = sd_bus_message_get_interface(message);
    if (member == "Register") {
        char const* app = nullptr;
        sd_bus_message_read(message, "s", &app);
        note("Register " + std::string(app));
        return sd_bus_reply_method_return(message, "");
    }
    if (member == "Get") {
        note("version");
        if (!m_manners.hasShortcuts)
            return sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.InvalidArgs", "No such interface");
        return sd_bus_reply_method_return(message, "v", "u", 1u);
    }
    if (member == "Close") {
        note(interface == sessionInterface ? "Close session" : "Close request");
        return sd_bus_reply_method_return(message, "");
    }
    if (interface != shortcuts)
        return 0;
    if (member == "CreateSession") {
        note(member);
        {
            std::lock_guard const lock(mutex());
            m_client = sd_bus_message_get_sender(message);
            m_session = std::string(object) + "/session/" + std::to_string(++m_sessionCount);
        }
        respond(message, m_manners.sessionCode, [&](sd_bus_message* results) {
            auto const handle = m_manners.isMalformed ? "no path" : session();
            sd_bus_message_append(results, "a{sv}", 1, "session_handle", "s", handle.c_str());
        });
    } else if (member == "ListShortcuts") {
        note(member);
        sd_bus_message_skip(message, "o");
        respond(message, 0, [&](sd_bus_message* results) { appendShortcuts(results, m_manners.knowsShortcut); });
    } else if (member == "BindShortcuts") {
        char const* id = nullptr;
        sd_bus_message_skip(message, "o");
        sd_bus_message_enter_container(message, 'a', "(sa{sv})");
        sd_bus_message_enter_container(message, 'r', "sa{sv}");
        sd_bus_message_read(message, "s", &id);
        auto about = readOptions(message);
        sd_bus_message_exit_container(message);
        sd_bus_message_exit_container(message);
        sd_bus_message_skip(message, "s");
        {
            std::lock_guard const lock(mutex());
            m_shortcut = id;
        }
        note(member + " " + id + " " + about["preferred_trigger"] + " \"" + about["description"] + "\"");
        respond(message, m_manners.bindCode, [&](sd_bus_message* results) {
            appendShortcuts(results, m_manners.bindCode == 0 && !m_manners.trigger.empty());
        });
    } else {
        return 0;
    }
    return 1;
}

void PortalStandIn::respond(
    sd_bus_message* call, std::uint32_t code, std::function<void(sd_bus_message*)> const& results)
{
    auto const path = requestPath(call, readOptions(call)["handle_token"]);
    sd_bus_reply_method_return(call, "o", path.c_str());
    if (m_manners.neverAnswersBind && std::strcmp(sd_bus_message_get_member(call), "BindShortcuts") == 0)
        return;
    sd_bus_message* response = nullptr;
    sd_bus_message_new_signal(bus(), &response, path.c_str(), "org.freedesktop.portal.Request", "Response");
    sd_bus_message_set_destination(response, sd_bus_message_get_sender(call));
    sd_bus_message_append(response, "u", code);
    results(response);
    EXPECT_GE(sd_bus_send(bus(), response, nullptr), 0);
    sd_bus_message_unref(response);
}

void PortalStandIn::appendShortcuts(sd_bus_message* message, bool hasShortcut)
{
    sd_bus_message_open_container(message, 'a', "{sv}");
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", "shortcuts");
    sd_bus_message_open_container(message, 'v', "a(sa{sv})");
    sd_bus_message_open_container(message, 'a', "(sa{sv})");
    // What another app has is of no interest to anybody.
    sd_bus_message_append(message, "(sa{sv})", "another", 1, "trigger_description", "s", "F12");
    if (hasShortcut) {
        std::lock_guard const lock(mutex());
        // A desktop that knows the shortcut before it is bound knows it by the name that it always has.
        auto const id = m_shortcut.empty() ? "hotkey-45-256" : m_shortcut;
        sd_bus_message_append(
            message, "(sa{sv})", id.c_str(), 1, "trigger_description", "s", m_manners.trigger.c_str());
        m_shortcut = id;
    }
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
}

void PortalStandIn::sendPress(bool isDown, std::string const& session, std::string const& shortcut, std::uint64_t time)
{
    onThread([this, isDown, session, shortcut, time] {
        EXPECT_GE(sd_bus_emit_signal(bus(), object, shortcuts, isDown ? "Activated" : "Deactivated", "osta{sv}",
                      session.c_str(), shortcut.c_str(), time, 1, "activation_token", "s", "token"),
            0);
    });
}

void PortalStandIn::changeTrigger(std::string const& trigger)
{
    onThread([this, trigger] {
        EXPECT_GE(sd_bus_emit_signal(bus(), object, shortcuts, "ShortcutsChanged", "oa(sa{sv})", session().c_str(), 1,
                      shortcut().c_str(), 1, "trigger_description", "s", trigger.c_str()),
            0);
    });
}

void PortalStandIn::closeSession()
{
    onThread(
        [this] { EXPECT_GE(sd_bus_emit_signal(bus(), session().c_str(), sessionInterface, "Closed", "a{sv}", 0), 0); });
}

std::string PortalStandIn::client() const
{
    std::lock_guard const lock(mutex());
    return m_client;
}

std::string PortalStandIn::session() const
{
    std::lock_guard const lock(mutex());
    return m_session;
}

std::string PortalStandIn::shortcut() const
{
    std::lock_guard const lock(mutex());
    return m_shortcut;
}

void forgePress(
    std::string const& busAddress, std::string const& victim, std::string const& session, std::string const& shortcut)
{
    sd_bus* forger = nullptr;
    sd_bus_new(&forger);
    sd_bus_set_address(forger, busAddress.c_str());
    sd_bus_set_bus_client(forger, 1);
    EXPECT_GE(sd_bus_start(forger), 0);
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(forger, &signal, object, shortcuts, "Activated");
    sd_bus_message_set_destination(signal, victim.c_str());
    sd_bus_message_append(signal, "osta{sv}", session.c_str(), shortcut.c_str(), std::uint64_t { 1 }, 0);
    EXPECT_GE(sd_bus_send(forger, signal, nullptr), 0);
    sd_bus_message_unref(signal);
    sd_bus_flush_close_unref(forger);
}

} // namespace paneweld_tests
