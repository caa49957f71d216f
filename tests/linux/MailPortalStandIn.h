#pragma once

#include "tests/linux/BusPeer.h"

#include <cstdint>
#include <string>

namespace paneweld_tests {

// A desktop's portal of our own on a test's bus, as far as mail goes, with a user who answers as the test says. What it
// was asked reads "ComposeEmail over=x11:200001 to=a,b subject=... body=... files=contents,contents", "OpenURI
// mid:...", "Close request".
class MailPortalStandIn : public BusPeer {
public:
    struct Manners {
        // Of the interface for mail; 0 for a portal without it.
        std::uint32_t version = 3;
        // 0 done, 1 the user cancelled, 2 otherwise.
        std::uint32_t code = 0;
        bool neverAnswers = false;
    };

    MailPortalStandIn(std::string busAddress, Manners manners);
    ~MailPortalStandIn() override { stop(); }

private:
    int handleCall(sd_bus_message* message) override;
    std::string readOptions(sd_bus_message* message, std::string& token) const;

    Manners const m_manners;
};

} // namespace paneweld_tests
