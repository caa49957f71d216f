#include "tests/linux/PanelStandIn.h"

#include <gtest/gtest.h>
#include <utility>

namespace paneweld_tests {

namespace {

std::string textOfNext(sd_bus_message* message);

std::string textOfAll(sd_bus_message* message, char const* between)
{
    std::string text;
    while (sd_bus_message_at_end(message, 0) == 0)
        text += (text.empty() ? "" : between) + textOfNext(message);
    return text;
}

std::string textOfContainer(sd_bus_message* message, char type, std::string const& contents)
{
    sd_bus_message_enter_container(message, type, contents.c_str());
    auto const inside = textOfAll(message, type == 'e' ? ": " : ", ");
    sd_bus_message_exit_container(message);
    if (type == 'v')
        return "<" + contents + " " + inside + ">";
    if (type == 'e')
        return inside;
    if (type == 'r')
        return "(" + inside + ")";
    return contents.starts_with('{') ? "{" + inside + "}" : "[" + inside + "]";
}

std::string textOfNext(sd_bus_message* message)
{
    char type = 0;
    char const* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return "unreadable";
    if (contents)
        return textOfContainer(message, type, contents);
    union {
        std::uint8_t byte;
        std::int32_t integer;
        std::uint32_t whole;
        char const* text;
    } value {};
    if (sd_bus_message_read_basic(message, type, &value) <= 0)
        return "unreadable";
    switch (type) {
    case 'y':
        return std::to_string(value.byte);
    case 'b':
        return value.integer ? "true" : "false";
    case 'i':
        return std::to_string(value.integer);
    case 'u':
        return std::to_string(value.whole);
    default:
        return std::string("'") + value.text + "'";
    }
}

} // namespace

PanelStandIn::PanelStandIn(std::string busAddress, std::string item)
    : BusPeer(std::move(busAddress), "app.test.Panel")
    , m_item(std::move(item))
{
    start();
    std::promise<void> isListening;
    onThread([&] {
        auto const heard = [](sd_bus_message* signal, void* context, sd_bus_error*) {
            static_cast<PanelStandIn*>(context)->note(
                sd_bus_message_get_member(signal) + std::string(" ") + textOfAll(signal, " "));
            return 0;
        };
        for (auto const* interface : { "org.kde.StatusNotifierItem", "com.canonical.dbusmenu" })
            EXPECT_GE(sd_bus_match_signal(bus(), nullptr, m_item.c_str(), nullptr, interface, nullptr, heard, this), 0);
        isListening.set_value();
    });
    isListening.get_future().wait();
}

std::future<std::string> PanelStandIn::ask(std::string const& path, std::string const& interface,
    std::string const& method, std::function<void(sd_bus_message*)> append)
{
    auto const promise = std::make_shared<std::promise<std::string>>();
    auto future = promise->get_future();
    onThread([this, path, interface, method, append = std::move(append), promise] {
        sd_bus_message* call = nullptr;
        sd_bus_message* answer = nullptr;
        sd_bus_error error {};
        sd_bus_message_new_method_call(bus(), &call, m_item.c_str(), path.c_str(), interface.c_str(), method.c_str());
        append(call);
        if (sd_bus_call(bus(), call, 0, &error, &answer) < 0)
            promise->set_value(std::string("error: ") + (error.name ? error.name : "not sent"));
        else
            promise->set_value(textOfAll(answer, " "));
        sd_bus_error_free(&error);
        sd_bus_message_unref(answer);
        sd_bus_message_unref(call);
    });
    return future;
}

} // namespace paneweld_tests
