#pragma once

#include "tests/linux/BusPeer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace paneweld_tests {

// A desktop's portal of our own on a test's bus, as far as choosing folders and opening addresses go, with a user who
// answers as the test says. What it was asked reads "OpenFile x11:200001 \"title\" accept_label=s:OK ...",
// "OpenURI \"\" https://example.org/", "OpenFile \"\" /the/file" and "Close".
class DialogPortal : public BusPeer {
public:
    struct Manners {
        // The name of an error instead of a dialog.
        std::string error {};
        // 0 yes, 1 the user declined, 2 otherwise.
        std::uint32_t code = 0;
        std::vector<std::string> uris {};
        // The answer overtakes the one that names the request.
        bool answersFirst = false;
        bool neverAnswers = false;
        // Results without the list, or with something else in its place.
        bool isMalformed = false;
    };

    // Returns when it has its name on the bus.
    DialogPortal(std::string busAddress, Manners manners);
    ~DialogPortal() override { stop(); }

private:
    int handleCall(sd_bus_message* message) override;
    void respond(sd_bus_message* call, std::string const& path);

    Manners m_manners;
};

} // namespace paneweld_tests
