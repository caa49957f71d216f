#include "tests/managers/HostProcess.h"
#include "tests/managers/OtherProgram.h"
#include "tests/managers/PanelLook.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"
#include "tests/support/RunOptions.h"

#include <gtest/gtest.h>
#include <tuple>
#include <xcb/xtest.h>

namespace paneweld_tests {

namespace {

constexpr auto tag = R"({"id":"b1","localized_title":"Ideas","type":"brainstorm"})";
constexpr int looksBetweenClicks = 100;

// An impatient user, or a key that bounces: nothing waits for what the key did.
void strikeEscape(Client& user, int times)
{
    constexpr xcb_keycode_t escapeKey = 9;
    for (int i = 0; i < times; ++i) {
        for (auto const type : { XCB_KEY_PRESS, XCB_KEY_RELEASE })
            xcb_test_fake_input(
                user.wire(), static_cast<std::uint8_t>(type), escapeKey, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    }
    user.sync();
}

} // namespace

class Closing : public ::testing::TestWithParam<WindowManager> { };

TEST_P(Closing, ManyEscapesInQuickSuccessionHarmNobody)
{
    Session session(GetParam());
    HostProcess host("gtk3");
    Client user(session.display());
    OtherProgram other(session, user);
    ASSERT_TRUE(user.waitUntil([&] { return host.count("ready") == 1; }));
    other.open();
    auto const place = firstPlaceOfPanel(user);
    // Where the other window is not over it. The pointer stays there, over the panel that goes.
    user.movePointer(place.x + 20, place.y + place.height / 2);
    auto const opens = countUnderTest("PANEWELD_TEST_ESCAPES", 10);
    for (int i = 0; i < opens; ++i) {
        auto const closedBefore = host.count("closed b1");
        host.tell(std::string("open announced b1 500 300 ") + tag);
        auto const panel = [&] { return host.window("b1"); };
        ASSERT_TRUE(user.waitUntil([&] {
            return panel() != XCB_WINDOW_NONE && user.isViewable(panel()) && user.opacity(panel()) == 1;
        })) << host.story();
        int looks = 0;
        ASSERT_TRUE(user.waitUntil([&] {
            if (user.activeWindow() == panel())
                return true;
            if (looks++ % looksBetweenClicks == 0)
                session.hasPixels() ? user.click() : void(other.bringForward(panel()));
            return false;
        })) << host.story();
        ASSERT_TRUE(user.waitUntil([&] {
            strikeEscape(user, 1 + i % 5);
            return host.count("closed b1") > closedBefore;
        })) << "after "
            << i << ", the host runs: " << host.isRunning() << "\n"
            << host.story();
        // The keyboard is nobody's any more.
        ASSERT_TRUE(other.bringForward()) << i;
        ASSERT_TRUE(other.typeInto()) << i;
    }
    survey(GetParam().name, "gtk3", "survives many Escapes", std::to_string(opens) + " of " + std::to_string(opens));
    EXPECT_TRUE(host.isRunning());
}

INSTANTIATE_TEST_SUITE_P(
    Every, Closing, ::testing::ValuesIn(windowManagersUnderTest()), [](auto const& under) { return under.param.name; });

} // namespace paneweld_tests
