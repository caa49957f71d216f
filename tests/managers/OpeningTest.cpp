#include "tests/managers/HostProcess.h"
#include "tests/managers/OpeningWatch.h"
#include "tests/managers/PanelLook.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"
#include "tests/support/RunOptions.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace paneweld_tests {

// Nobody sees a panel before it has its look and its place, however its host opens it.
class Opening : public ::testing::TestWithParam<std::tuple<WindowManager, std::string>> { };

TEST_P(Opening, IsNeverSeenUnstyled)
{
    auto const& [manager, road] = GetParam();
    Session session(manager);
    HostProcess host("gtk3");
    Client user(session.display());
    ASSERT_TRUE(user.waitUntil([&] { return host.count("ready") == 1; }));
    auto const place = firstPlaceOfPanel(user);
    auto const pixels = manager.hasOwnServer ? OpeningWatch::Pixels::Hidden : OpeningWatch::Pixels::Seen;
    int seen = 0;
    std::string firstWrong;
    auto const opens = countUnderTest("PANEWELD_TEST_OPENS", 8);
    for (int i = 0; i < opens; ++i) {
        auto const id = "b" + std::to_string(i);
        OpeningWatch watch(session.display(), { place, place.height, "Ideas" }, pixels);
        host.tell("open " + road + " " + id + R"( 500 300 {"id":")" + id
            + R"(","localized_title":"Ideas","type":"brainstorm"})");
        EXPECT_TRUE(user.waitUntil([&] {
            auto const window = host.window(id);
            return window != XCB_WINDOW_NONE && user.opacity(window) == 1 && !user.hasEmptyShape(window)
                && visiblePlace(user, window) == place;
        })) << host.story();
        watch.stop();
        seen += watch.wrongLooks() > 0 ? 1 : 0;
        firstWrong = firstWrong.empty() ? watch.firstWrong() : firstWrong;
        EXPECT_GT(watch.looks(), 0);
        host.tell("destroy " + id);
        EXPECT_TRUE(user.waitUntil([&] { return !user.isViewable(host.window(id)); }));
    }
    survey(manager.name, road, "seen unstyled, " + road, std::to_string(seen) + " of " + std::to_string(opens));
    // Who is not told before the window is mapped is in a race with the window manager, and on a machine that has no
    // time for either loses one now and then.
    EXPECT_LE(seen, road == "announced" ? 0 : std::max(1, opens / 100)) << "of " << opens << " opens; " << firstWrong;
}

INSTANTIATE_TEST_SUITE_P(EveryRoad, Opening,
    ::testing::Combine(::testing::ValuesIn(windowManagersUnderTest()),
        ::testing::Values(std::string("found"), std::string("announced"))),
    [](auto const& under) { return std::get<0>(under.param).name + "_" + std::get<1>(under.param); });

} // namespace paneweld_tests
