#pragma once

#include "tests/linux/BusPeer.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace paneweld_tests {

// A desktop's notifications of our own on a test's bus, with a user who presses what the test says. What was shown
// reads: "title|body|action name=text,...".
class NotificationStandIn : public BusPeer {
public:
    // Returns when it has its name on the bus.
    explicit NotificationStandIn(std::string busAddress);
    ~NotificationStandIn() override { stop(); }

    // All that was shown, in order; what took the place of another is listed like any other.
    std::vector<std::string> shown() const;
    // The last one that is there; empty for none.
    std::string open() const;
    // The user presses an action of it, which closes it, or closes it without a word.
    void press(std::string const& action);
    void dismiss();
    // Whoever showed the notices knows of all that was done with them, and of who came back.
    bool isHeard() const;
    // The desktop shows no notifications from now on, and another program does.
    void leave();
    void comeBack();

private:
    int handleCall(sd_bus_message* message) override;
    int show(sd_bus_message* message);
    void emitClosed(std::uint32_t number, std::uint32_t reason);
    // The user does it with the open one.
    void act(std::function<void(std::uint32_t number)> done);
    void askWhetherHeard();

    std::vector<std::string> m_shown;
    // The connection that shows notices.
    std::string m_client;
    int m_unheard = 0;
    std::uint32_t m_count = 0;
    std::uint32_t m_open = 0;
};

} // namespace paneweld_tests
