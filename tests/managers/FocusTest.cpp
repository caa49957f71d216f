#include "tests/managers/DesktopPanel.h"
#include "tests/managers/HostProcess.h"
#include "tests/managers/OtherProgram.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"
#include "tests/support/RunOptions.h"

#include <chrono>
#include <gtest/gtest.h>

namespace paneweld_tests {

// The user types in another program, does something that brings the panel, and goes on typing in there.
class Focus : public ::testing::TestWithParam<WindowManager> {
protected:
    Focus()
        : raises(countUnderTest("PANEWELD_TEST_RAISES", 20))
        , session(GetParam())
        , host("gtk3")
        , user(session.display())
        , other(session, user)
    {
    }

    void openPanel()
    {
        ASSERT_TRUE(user.waitUntil([&] { return host.count("ready") == 1; }));
        other.open();
        host.tell(R"(open announced b1 640 91 {"id":"b1","localized_title":"Ideas","type":"brainstorm"})");
        ASSERT_TRUE(user.waitUntil([&] {
            panel = host.window("b1");
            return panel != XCB_WINDOW_NONE && user.isViewable(panel) && user.opacity(panel) == 1;
        })) << host.story();
    }

    void hidePanel()
    {
        host.tell("hide b1");
        ASSERT_TRUE(user.waitUntil([&] { return !user.isViewable(panel); }));
    }

    void typeElsewhere()
    {
        ASSERT_TRUE(other.bringForward());
        ASSERT_TRUE(other.typeInto());
    }

    void pressShortcut(int count)
    {
        // As said to the host.
        constexpr xcb_keycode_t keys[] = { 37, 64, 44 };
        for (auto const key : keys)
            user.press(key);
        for (auto const key : keys)
            user.release(key);
        ASSERT_TRUE(user.waitUntil([&] { return host.count("triggered") == count && user.isViewable(panel); }))
            << host.story();
    }

    // Counts it when it comes.
    void awaitPanel()
    {
        constexpr std::chrono::milliseconds soon { 50 };
        auto const seen = std::chrono::steady_clock::now();
        if (!user.waitUntil([&] { return user.activeWindow() == panel; }))
            return;
        ++active;
        soonActive += std::chrono::steady_clock::now() - seen <= soon ? 1 : 0;
    }

    void judge(std::string const& what)
    {
        auto const& manager = GetParam().name;
        auto const ofAll = " of " + std::to_string(raises);
        survey(manager, "gtk3", "active after " + what, std::to_string(active) + ofAll);
        survey(manager, "gtk3", "active after " + what + ", 50 ms", std::to_string(soonActive) + ofAll);
        EXPECT_EQ(active, raises);
        // On a machine that does other things as well, the window manager itself may be late now and then.
        EXPECT_GE(soonActive, raises / 2);
    }

    // Control, option and J: no window manager here has it for itself.
    static constexpr auto shortcut = "shortcut 38 6144 b1";

    int const raises;
    Session session;
    HostProcess host;
    Client user;
    OtherProgram other;
    xcb_window_t panel = XCB_WINDOW_NONE;
    int active = 0;
    int soonActive = 0;
};

TEST_P(Focus, FollowsTheShortcutIntoThePanel)
{
    ASSERT_NO_FATAL_FAILURE(openPanel());
    host.tell(shortcut);
    for (int i = 0; i < raises && active == i; ++i) {
        ASSERT_NO_FATAL_FAILURE(hidePanel());
        ASSERT_NO_FATAL_FAILURE(typeElsewhere());
        ASSERT_NO_FATAL_FAILURE(pressShortcut(i + 1));
        awaitPanel();
    }
    judge("the shortcut");
}

// A panel tells of a click over the bus and gives no time: that the user typed elsewhere since the last time that is
// known is no reason to stay behind. Each second panel is still there, behind the other program.
TEST_P(Focus, FollowsTheClickOnTheStatusItemIntoThePanel)
{
    DesktopPanel desktopPanel(session.busAddress(), user);
    ASSERT_NO_FATAL_FAILURE(openPanel());
    ASSERT_TRUE(desktopPanel.awaitItem());
    host.tell("statusitem b1");
    host.tell(shortcut);
    // The first panel comes by a key, whose time is known.
    ASSERT_NO_FATAL_FAILURE(hidePanel());
    ASSERT_NO_FATAL_FAILURE(typeElsewhere());
    ASSERT_NO_FATAL_FAILURE(pressShortcut(1));
    for (int i = 0; i < raises && active == i; ++i) {
        if (i % 2 == 0) {
            ASSERT_NO_FATAL_FAILURE(hidePanel());
        }
        ASSERT_TRUE(other.insistOnTyping()) << "at " << i;
        desktopPanel.click();
        ASSERT_TRUE(user.waitUntil([&] { return user.isViewable(panel); })) << host.story();
        awaitPanel();
    }
    judge("a click on the status item");
}

INSTANTIATE_TEST_SUITE_P(
    Every, Focus, ::testing::ValuesIn(windowManagersUnderTest()), [](auto const& under) { return under.param.name; });

} // namespace paneweld_tests
