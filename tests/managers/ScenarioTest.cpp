#include "tests/managers/Scenario.h"
#include "tests/managers/Survey.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <tuple>

namespace paneweld_tests {

namespace {

using Pairing = std::tuple<WindowManager, std::string>;

// Every toolkit that is here, under a window manager with a compositor beside it and under one that composites itself;
// under the others GTK 3. A list with commas in PANEWELD_TEST_TOOLKITS is for all of them.
std::vector<Pairing> pairingsUnderTest()
{
    auto const* const wished = std::getenv("PANEWELD_TEST_TOOLKITS");
    std::vector<Pairing> pairings;
    for (auto const& manager : windowManagersUnderTest()) {
        bool const hasAll = manager.name == "openbox" || manager.name == "xfwm4";
        std::istringstream names(wished ? wished : hasAll ? PANEWELD_TEST_BUILT_TOOLKITS : "gtk3");
        for (std::string name; std::getline(names, name, ',');)
            pairings.emplace_back(manager, name);
    }
    return pairings;
}

} // namespace

class Managers : public ::testing::TestWithParam<Pairing> { };

TEST_P(Managers, APanelLivesItsLife)
{
    auto const& [manager, toolkit] = GetParam();
    Session session(manager);
    auto const findings = Scenario(session, toolkit).run();
    for (auto const& finding : findings) {
        survey(manager.name, toolkit, finding.name, finding.holds ? "yes" : "no");
        // SDL makes a window anew when it is first painted, and nobody announces that one.
        bool const isRace = toolkit == "sdl2" && finding.name == "unseen";
        EXPECT_TRUE(finding.holds || isRace) << finding.name << ": " << finding.note;
    }
}

INSTANTIATE_TEST_SUITE_P(Every, Managers, ::testing::ValuesIn(pairingsUnderTest()),
    [](auto const& under) { return std::get<0>(under.param).name + "_" + std::get<1>(under.param); });

} // namespace paneweld_tests
