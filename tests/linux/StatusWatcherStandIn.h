#pragma once

#include "tests/linux/BusPeer.h"

#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace paneweld_tests {

// A desktop's list of status items of our own, on a test's bus. A later one takes the list over from an earlier one
// without a gap. What it was asked reads: "Register item sender", "hosts?".
class StatusWatcherStandIn : public BusPeer {
public:
    struct Manners {
        bool hasHost = true;
        // So many registrations fail at first, as when the object is not there yet.
        int refusals = 0;
        // And so many questions for the host.
        int hostRefusals = 0;
        bool neverAnswers = false;
    };

    // Returns when it has its name on the bus.
    StatusWatcherStandIn(std::string busAddress, Manners manners);
    explicit StatusWatcherStandIn(std::string busAddress)
        : StatusWatcherStandIn(std::move(busAddress), Manners {})
    {
    }
    ~StatusWatcherStandIn() override { stop(); }

    // Those whose owners are on the bus.
    std::vector<std::string> items() const;
    // A panel comes, or goes.
    void setHost(bool hasHost);

private:
    struct Item {
        std::string name;
        // A connection.
        std::string owner;
    };

    int handleCall(sd_bus_message* message) override;
    static int nameDidChange(sd_bus_message* message, void* self, sd_bus_error*);

    Manners m_manners;
    std::vector<Item> m_items;
};

} // namespace paneweld_tests
