#include "tests/linux/MailPortalStandIn.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";

std::string contentsOf(int descriptor)
{
    std::array<char, 4096> bytes {};
    auto const count = pread(descriptor, bytes.data(), bytes.size(), 0);
    return { bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0 };
}

std::string readValue(sd_bus_message* message)
{
    char type = 0;
    char const* contents = nullptr;
    sd_bus_message_peek_type(message, &type, &contents);
    std::string value;
    if (type == 's') {
        char const* text = nullptr;
        sd_bus_message_read(message, "s", &text);
        return text;
    }
    std::string const inside = contents;
    sd_bus_message_enter_container(message, 'a', inside.c_str());
    while (sd_bus_message_at_end(message, 0) == 0) {
        value += value.empty() ? "" : ",";
        if (inside == "h") {
            int descriptor = -1;
            sd_bus_message_read(message, "h", &descriptor);
            value += contentsOf(descriptor);
        } else {
            char const* text = nullptr;
            sd_bus_message_read(message, "s", &text);
            value += text;
        }
    }
    sd_bus_message_exit_container(message);
    return value;
}

} // namespace

MailPortalStandIn::MailPortalStandIn(std::string busAddress, Manners manners)
    : BusPeer(std::move(busAddress), service)
    , m_manners(manners)
{
    start();
}

std::string MailPortalStandIn::readOptions(sd_bus_message* message, std::string& token) const
{
    std::map<std::string, std::string> options;
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        char const* key = nullptr;
        char const* contents = nullptr;
        sd_bus_message_read(message, "s", &key);
        sd_bus_message_peek_type(message, nullptr, &contents);
        sd_bus_message_enter_container(message, 'v', contents);
        options[key] = readValue(message);
        sd_bus_message_exit_container(message);
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    token = options["handle_token"];
    std::string words;
    for (auto const& [key, word] : { std::pair { "addresses", "to" }, { "address", "only" }, { "subject", "subject" },
             { "body", "body" }, { "attachment_fds", "files" } }) {
        if (options.contains(key))
            words += std::string(" ") + word + "=" + options[key];
    }
    return words;
}

int MailPortalStandIn::handleCall(sd_bus_message* message)
{
    std::string const member = sd_bus_message_get_member(message);
    if (member == "Register")
        return sd_bus_reply_method_return(message, "");
    if (member == "Get") {
        if (m_manners.version == 0)
            return sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.InvalidArgs", "No such interface");
        return sd_bus_reply_method_return(message, "v", "u", m_manners.version);
    }
    if (member == "Close") {
        note("Close request");
        return sd_bus_reply_method_return(message, "");
    }
    if (member != "ComposeEmail" && member != "OpenURI")
        return 0;
    auto line = member;
    char const* text = nullptr;
    sd_bus_message_read(message, "s", &text);
    if (*text)
        line += std::string(" over=") + text;
    if (member == "OpenURI") {
        sd_bus_message_read(message, "s", &text);
        line += std::string(" ") + text;
    }
    std::string token;
    line += readOptions(message, token);
    std::string sender = sd_bus_message_get_sender(message) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    auto const path = "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
    sd_bus_reply_method_return(message, "o", path.c_str());
    note(line);
    if (m_manners.neverAnswers)
        return 1;
    sd_bus_message* response = nullptr;
    sd_bus_message_new_signal(bus(), &response, path.c_str(), "org.freedesktop.portal.Request", "Response");
    sd_bus_message_set_destination(response, sd_bus_message_get_sender(message));
    sd_bus_message_append(response, "ua{sv}", m_manners.code, 0);
    EXPECT_GE(sd_bus_send(bus(), response, nullptr), 0);
    sd_bus_message_unref(response);
    return 1;
}

} // namespace paneweld_tests
