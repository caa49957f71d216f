#include "tests/managers/HostProcess.h"
#include "tests/managers/OtherProgram.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"

#include <chrono>
#include <gtest/gtest.h>

namespace paneweld_tests {

// The user types in another program, presses the system-wide shortcut, and goes on typing in the panel that comes.
class Focus : public ::testing::TestWithParam<WindowManager> { };

TEST_P(Focus, FollowsTheShortcutIntoThePanel)
{
    // Control, option and J, in the host's numbers and in the keyboard's: no window manager here has it for itself.
    constexpr auto shortcut = "shortcut 38 6144 b1";
    constexpr xcb_keycode_t keys[] = { 37, 64, 44 };
    constexpr std::chrono::milliseconds soon { 50 };
    auto const raises = countUnderTest("PANEWELD_TEST_RAISES", 20);
    Session session(GetParam());
    HostProcess host("gtk3");
    Client user(session.display());
    OtherProgram other(session, user);
    ASSERT_TRUE(user.waitUntil([&] { return host.count("ready") == 1; }));
    other.open();
    host.tell(R"(open announced b1 640 91 {"id":"b1","localized_title":"Ideas","type":"brainstorm"})");
    xcb_window_t panel = XCB_WINDOW_NONE;
    ASSERT_TRUE(user.waitUntil([&] {
        panel = host.window("b1");
        return panel != XCB_WINDOW_NONE && user.isViewable(panel) && user.opacity(panel) == 1;
    })) << host.story();
    host.tell(shortcut);
    int active = 0;
    int soonActive = 0;
    for (int i = 0; i < raises; ++i) {
        host.tell("hide b1");
        ASSERT_TRUE(user.waitUntil([&] { return !user.isViewable(panel); }));
        ASSERT_TRUE(other.bringForward());
        ASSERT_TRUE(other.typeInto());
        for (auto const key : keys)
            user.press(key);
        for (auto const key : keys)
            user.release(key);
        ASSERT_TRUE(user.waitUntil([&] { return host.count("triggered") == i + 1 && user.isViewable(panel); }))
            << host.story();
        auto const seen = std::chrono::steady_clock::now();
        if (!user.waitUntil([&] { return user.activeWindow() == panel; }))
            break;
        ++active;
        soonActive += std::chrono::steady_clock::now() - seen <= soon ? 1 : 0;
    }
    survey(
        GetParam().name, "gtk3", "active after the shortcut", std::to_string(active) + " of " + std::to_string(raises));
    survey(GetParam().name, "gtk3", "within 50 ms of being there",
        std::to_string(soonActive) + " of " + std::to_string(raises));
    EXPECT_EQ(active, raises);
    // On a machine that does other things as well, the window manager itself may be late now and then.
    EXPECT_GE(soonActive, raises / 2);
}

INSTANTIATE_TEST_SUITE_P(
    Every, Focus, ::testing::ValuesIn(windowManagersUnderTest()), [](auto const& under) { return under.param.name; });

} // namespace paneweld_tests
