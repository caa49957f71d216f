#include "tests/managers/Scenario.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <tuple>

namespace paneweld_tests {

namespace {

std::vector<std::string> toolkitsUnderTest()
{
    auto const* const wished = std::getenv("PANEWELD_TEST_TOOLKITS");
    std::istringstream names(wished ? wished : "gtk3");
    std::vector<std::string> toolkits;
    for (std::string name; std::getline(names, name, ',');)
        toolkits.push_back(name);
    return toolkits;
}

} // namespace

class Managers : public ::testing::TestWithParam<std::tuple<WindowManager, std::string>> { };

TEST_P(Managers, APanelLivesItsLife)
{
    auto const& [manager, toolkit] = GetParam();
    Session session(manager);
    auto const findings = Scenario(session, toolkit).run();
    // The survey writes down what is; every other run knows what has to be.
    if (auto const* const survey = std::getenv("PANEWELD_TEST_SURVEY")) {
        std::ofstream table(survey, std::ios::app);
        for (auto const& finding : findings)
            table << manager.name << '\t' << toolkit << '\t' << finding.name << '\t' << (finding.holds ? "yes" : "no") << '\n';
    }
    for (auto const& finding : findings)
        EXPECT_TRUE(finding.holds) << finding.name << ": " << finding.note;
}

INSTANTIATE_TEST_SUITE_P(Every, Managers,
    ::testing::Combine(::testing::ValuesIn(windowManagersUnderTest()), ::testing::ValuesIn(toolkitsUnderTest())),
    [](auto const& under) { return std::get<0>(under.param).name + "_" + std::get<1>(under.param); });

} // namespace paneweld_tests
