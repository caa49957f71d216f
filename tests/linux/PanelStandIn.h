#pragma once

#include "tests/linux/BusPeer.h"

#include <functional>
#include <future>
#include <string>
#include <systemd/sd-bus.h>

namespace paneweld_tests {

// A panel of our own, which asks things of a status item and its menu as other panels do, and writes down the signals
// that it hears of them: "LayoutUpdated 2 0". Answers are told as text, in which a variant shows its type:
// "3 true 'text' [1, 2] {'key': <s 'text'>} (1, 2)"; errors read "error: " and their name.
class PanelStandIn : public BusPeer {
public:
    PanelStandIn(std::string busAddress, std::string item);
    ~PanelStandIn() override { stop(); }

    // The arguments are those of sd_bus_message_append.
    template<typename... Arguments>
    std::future<std::string> askItem(char const* method, char const* signature, Arguments... arguments)
    {
        return ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", method,
            [=](sd_bus_message* call) { sd_bus_message_append(call, signature, arguments...); });
    }
    template<typename... Arguments>
    std::future<std::string> askMenu(char const* method, char const* signature, Arguments... arguments)
    {
        return ask("/MenuBar", "com.canonical.dbusmenu", method,
            [=](sd_bus_message* call) { sd_bus_message_append(call, signature, arguments...); });
    }
    std::future<std::string> ask(std::string const& path, std::string const& interface, std::string const& method,
        std::function<void(sd_bus_message*)> append);

private:
    int handleCall(sd_bus_message*) override { return 0; }

    std::string m_item;
};

} // namespace paneweld_tests
