#include "tests/linux/PortalBackendStandIn.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto object = "/org/freedesktop/portal/desktop";
constexpr auto shortcuts = "org.freedesktop.impl.portal.GlobalShortcuts";

} // namespace

PortalBackendStandIn::PortalBackendStandIn(std::string busAddress)
    : BusPeer(std::move(busAddress), name)
{
    start();
}

int PortalBackendStandIn::handleCall(sd_bus_message* message)
{
    std::string const member = sd_bus_message_get_member(message);
    if (member == "GetAll" || member == "Get") {
        char const* interface = nullptr;
        sd_bus_message_read(message, "s", &interface);
        if (std::string(interface) != shortcuts)
            return 0;
        return member == "Get" ? sd_bus_reply_method_return(message, "v", "u", 1u)
                               : sd_bus_reply_method_return(message, "a{sv}", 1, "version", "u", 1u);
    }
    if (member == "Close")
        return sd_bus_reply_method_return(message, "");
    if (std::string(sd_bus_message_get_interface(message)) != shortcuts)
        return 0;
    char const* request = nullptr;
    char const* session = nullptr;
    char const* text = nullptr;
    sd_bus_message_read(message, "oo", &request, &session);
    m_session = session;
    if (member == "CreateSession") {
        sd_bus_message_read(message, "s", &text);
        note(member + " " + text);
        sd_bus_reply_method_return(message, "ua{sv}", 0u, 1, "session_handle", "s", session);
    } else if (member == "ListShortcuts") {
        note(member);
        answer(message, !m_shortcut.empty());
    } else if (member == "BindShortcuts") {
        sd_bus_message_enter_container(message, 'a', "(sa{sv})");
        sd_bus_message_enter_container(message, 'r', "sa{sv}");
        sd_bus_message_read(message, "s", &text);
        m_shortcut = text;
        note(member + " " + text);
        answer(message, true);
    } else {
        return 0;
    }
    return 1;
}

void PortalBackendStandIn::answer(sd_bus_message* call, bool hasShortcut) const
{
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_append(reply, "u", 0u);
    sd_bus_message_open_container(reply, 'a', "{sv}");
    sd_bus_message_open_container(reply, 'e', "sv");
    sd_bus_message_append(reply, "s", "shortcuts");
    sd_bus_message_open_container(reply, 'v', "a(sa{sv})");
    sd_bus_message_open_container(reply, 'a', "(sa{sv})");
    if (hasShortcut) {
        sd_bus_message_append(reply, "(sa{sv})", m_shortcut.c_str(), 2, "description", "s", "Start",
            "trigger_description", "s", "Press Super+N");
    }
    for (int i = 0; i < 4; ++i)
        sd_bus_message_close_container(reply);
    EXPECT_GE(sd_bus_send(nullptr, reply, nullptr), 0);
    sd_bus_message_unref(reply);
}

void PortalBackendStandIn::press(bool isDown)
{
    onThread([this, isDown] {
        EXPECT_GE(sd_bus_emit_signal(bus(), object, shortcuts, isDown ? "Activated" : "Deactivated", "osta{sv}",
                      m_session.c_str(), m_shortcut.c_str(), std::uint64_t { 1 }, 0),
            0);
    });
}

} // namespace paneweld_tests
