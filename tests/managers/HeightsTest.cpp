#include "tests/linux/Onlooker.h"
#include "tests/managers/HostProcess.h"
#include "tests/managers/PanelLook.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"
#include "tests/support/RunOptions.h"

#include <gtest/gtest.h>
#include <random>

namespace paneweld_tests {

// However the host changes its panel's height, and however fast: everybody sees it standing on its lower edge, with its
// middle where it was.
class Heights : public ::testing::TestWithParam<WindowManager> { };

TEST_P(Heights, NeverMoveTheLowerEdgeOrTheMiddle)
{
    constexpr int requestsAtOnce = 4;
    auto const requests = countUnderTest("PANEWELD_TEST_HEIGHTS", 100);
    Session session(GetParam());
    HostProcess host("gtk3");
    Client user(session.display());
    ASSERT_TRUE(user.waitUntil([&] { return host.count("ready") == 1; }));
    host.tell(R"(open announced b1 640 91 {"id":"b1","localized_title":"Ideas","type":"brainstorm"})");
    auto const place = firstPlaceOfPanel(user);
    xcb_window_t panel = XCB_WINDOW_NONE;
    ASSERT_TRUE(user.waitUntil([&] {
        panel = host.window("b1");
        return panel != XCB_WINDOW_NONE && user.opacity(panel) == 1 && visiblePlace(user, panel) == place;
    })) << host.story();
    Onlooker onlooker(session.display());
    onlooker.watch(panel);
    std::mt19937 random(testSeed());
    std::uniform_int_distribution<int> height(place.height, 500);
    int last = 0;
    for (int i = 0; i < requests; ++i) {
        last = height(random);
        host.tell("height b1 " + std::to_string(last) + " plain");
        if (i % requestsAtOnce != 0 && i + 1 != requests)
            continue;
        ASSERT_TRUE(user.waitUntil([&] {
            onlooker.look();
            return visiblePlace(user, panel) == grownTo(place, last);
        })) << "request "
            << i << " for " << last << ", it is " << visiblePlace(user, panel);
    }
    user.sync();
    onlooker.look();
    auto const steps = onlooker.geometries();
    int wrong = 0;
    std::string firstWrong;
    for (auto const& step : steps) {
        if (step.bottom() == place.bottom() && step.doubledCentre() == place.doubledCentre())
            continue;
        if (wrong++ == 0)
            firstWrong = ::testing::PrintToString(step);
    }
    survey(GetParam().name, "gtk3", "steps off the edge or the middle",
        std::to_string(wrong) + " of " + std::to_string(steps.size()));
    EXPECT_EQ(wrong, 0) << "of " << steps.size() << ", the first of them " << firstWrong;
    EXPECT_GT(steps.size(), static_cast<std::size_t>(requests / requestsAtOnce / 2));
}

INSTANTIATE_TEST_SUITE_P(
    Every, Heights, ::testing::ValuesIn(windowManagersUnderTest()), [](auto const& under) { return under.param.name; });

} // namespace paneweld_tests
