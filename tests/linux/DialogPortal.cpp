#include "tests/linux/DialogPortal.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto object = "/org/freedesktop/portal/desktop";

// One variant as text: "s:OK", "b:1", "ay:/home/ada".
std::string readVariant(sd_bus_message* message)
{
    char const* contents = nullptr;
    sd_bus_message_peek_type(message, nullptr, &contents);
    std::string const type = contents;
    sd_bus_message_enter_container(message, 'v', type.c_str());
    std::string text = type + ":";
    if (type == "s") {
        char const* value = nullptr;
        sd_bus_message_read(message, "s", &value);
        text += value;
    } else if (type == "b") {
        int value = 0;
        sd_bus_message_read(message, "b", &value);
        text += std::to_string(value);
    } else if (type == "ay") {
        void const* bytes = nullptr;
        std::size_t size = 0;
        sd_bus_message_read_array(message, 'y', &bytes, &size);
        // With a NUL at the end.
        text += size > 0 ? static_cast<char const*>(bytes) : "";
    }
    sd_bus_message_exit_container(message);
    return text;
}

std::map<std::string, std::string> readOptions(sd_bus_message* message)
{
    std::map<std::string, std::string> options;
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        char const* key = nullptr;
        sd_bus_message_read(message, "s", &key);
        options[key] = readVariant(message);
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return options;
}

} // namespace

DialogPortal::DialogPortal(std::string busAddress, Manners manners)
    : BusPeer(std::move(busAddress), service)
    , m_manners(std::move(manners))
{
    start();
}

int DialogPortal::handleCall(sd_bus_message* message)
{
    std::string const member = sd_bus_message_get_member(message);
    if (member == "Close") {
        note(member);
        return sd_bus_reply_method_return(message, "");
    }
    if (member != "OpenFile" && member != "OpenURI")
        return 0;
    char const* parent = nullptr;
    sd_bus_message_read(message, "s", &parent);
    std::string what;
    if (sd_bus_message_has_signature(message, "sha{sv}")) {
        int descriptor = -1;
        sd_bus_message_read(message, "h", &descriptor);
        what = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
    } else {
        char const* text = nullptr;
        sd_bus_message_read(message, "s", &text);
        what = text;
    }
    auto options = readOptions(message);
    auto const token = options["handle_token"].substr(2);
    options.erase("handle_token");
    auto line = member + " \"" + parent + "\" " + what;
    for (auto const& [key, value] : options)
        line += " " + key + "=" + value;
    note(line);
    if (!m_manners.error.empty())
        return sd_bus_reply_method_errorf(message, m_manners.error.c_str(), "not here");
    std::string sender = sd_bus_message_get_sender(message) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    auto const path = std::string(object) + "/request/" + sender + "/" + token;
    if (m_manners.answersFirst)
        respond(message, path);
    sd_bus_reply_method_return(message, "o", path.c_str());
    if (!m_manners.answersFirst && !m_manners.neverAnswers)
        respond(message, path);
    return 1;
}

void DialogPortal::respond(sd_bus_message* call, std::string const& path)
{
    sd_bus_message* response = nullptr;
    sd_bus_message_new_signal(bus(), &response, path.c_str(), "org.freedesktop.portal.Request", "Response");
    sd_bus_message_set_destination(response, sd_bus_message_get_sender(call));
    sd_bus_message_append(response, "u", m_manners.code);
    if (m_manners.isMalformed) {
        sd_bus_message_append(response, "a{sv}", 1, "uris", "u", 5u);
    } else {
        std::vector<char*> uris;
        for (auto& uri : m_manners.uris)
            uris.push_back(uri.data());
        uris.push_back(nullptr);
        sd_bus_message_open_container(response, 'a', "{sv}");
        sd_bus_message_open_container(response, 'e', "sv");
        sd_bus_message_append(response, "s", "uris");
        sd_bus_message_open_container(response, 'v', "as");
        sd_bus_message_append_strv(response, uris.data());
        for (int i = 0; i < 3; ++i)
            sd_bus_message_close_container(response);
    }
    EXPECT_GE(sd_bus_send(bus(), response, nullptr), 0);
    sd_bus_message_unref(response);
}

} // namespace paneweld_tests
