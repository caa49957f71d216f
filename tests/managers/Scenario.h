#pragma once

#include "tests/linux/Onlooker.h"
#include "tests/managers/HostProcess.h"
#include "tests/managers/OpeningWatch.h"
#include "tests/managers/OtherProgram.h"
#include "tests/managers/Session.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// One panel's life in somebody else's app, as a user and other programs on the screen see it: it appears, grows and
// shrinks, is pinned and unpinned, closes on Escape and comes again under its old id.
class Scenario {
public:
    // What was looked at, and whether it was as it should be.
    struct Finding {
        std::string name;
        bool holds = false;
        std::string note {};
    };

    Scenario(Session& session, std::string const& toolkit);

    std::vector<Finding> run();
    // The same names, in the same order, without a run.
    static std::vector<std::string> const& findingNames();

private:
    bool appear(std::string const& road, int height);
    void growAndShrink();
    // Empty when it went as it should, else what was wrong.
    std::string resize(int height, std::string const& manner);
    void pinAndUnpin();
    void escape();
    void clickPanel();

    void note(std::string const& name, bool holds, std::string const& words = {});
    bool comesTrue(std::function<bool()> condition);
    // The X window of the panel, whatever the toolkit made of it.
    xcb_window_t panel() { return m_host.window("b1"); }
    bool isAt(Geometry const& place);
    std::string whereItIs();

    bool m_hasPixels;
    Geometry m_firstPlace {};
    HostProcess m_host;
    Client m_user;
    OtherProgram m_other;
    std::vector<Finding> m_findings;
};

} // namespace paneweld_tests
