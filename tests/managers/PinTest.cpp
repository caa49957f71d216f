#include "tests/managers/HostProcess.h"
#include "tests/managers/OtherProgram.h"
#include "tests/managers/Session.h"
#include "tests/managers/Survey.h"
#include "tests/support/RunOptions.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace paneweld_tests {

namespace {

constexpr auto actions = "msrw"; // map, unmap, map again, a new window manager
constexpr std::size_t actionCount = 4;

// The shortest walk in which every sequence of so many actions comes (de Bruijn), its beginning added at its end.
std::string everySequence(std::size_t length)
{
    std::string walk;
    std::string word(length * actionCount, 0);
    std::function<void(std::size_t, std::size_t)> const extend = [&](std::size_t at, std::size_t period) {
        if (at > length) {
            if (length % period == 0)
                walk += word.substr(1, period);
            return;
        }
        word[at] = word[at - period];
        extend(at + 1, period);
        for (char next = static_cast<char>(word[at - period] + 1); next < static_cast<char>(actionCount); ++next) {
            word[at] = next;
            extend(at + 1, at);
        }
    };
    extend(1, 1);
    walk += walk.substr(0, length - 1);
    for (auto& step : walk)
        step = actions[static_cast<std::size_t>(step)];
    return walk;
}

} // namespace

// A pinned panel is above all ordinary windows, whatever happens to it and to the window manager.
class Pins : public ::testing::TestWithParam<WindowManager> {
protected:
    void act(char action)
    {
        auto const show = [&] {
            host->tell("show b1");
            isMapped = true;
        };
        auto const hide = [&] {
            host->tell("hide b1");
            isMapped = false;
            // A window may be shown again when its window manager has let it go (ICCCM 4.1.4). icewm loses the window
            // of any program that does not wait for it.
            ASSERT_TRUE(user->waitUntil([&] { return !user->isViewable(panel) && isLetGo(); }));
        };
        if (action == 'm') {
            show();
        } else if (action == 's') {
            hide();
        } else if (action == 'r') {
            hide();
            show();
        } else if (session->hasPixels()) {
            // A window manager that is the server as well cannot go alone.
            session->endWindowManager();
            session->startWindowManager();
            other->takePlace();
        }
    }

    bool isLetGo()
    {
        constexpr std::uint32_t withdrawn = 0;
        auto const state = user->words(panel, "WM_STATE");
        return !state || state->empty() || state->front() == withdrawn;
    }

    std::unique_ptr<Session> session;
    std::unique_ptr<HostProcess> host;
    std::unique_ptr<Client> user;
    std::unique_ptr<OtherProgram> other;
    xcb_window_t panel = XCB_WINDOW_NONE;
    bool isMapped = true;
};

TEST_P(Pins, HoldOverEverySequence)
{
    auto const length = static_cast<std::size_t>(countUnderTest("PANEWELD_TEST_PIN_LENGTH", 3));
    session = std::make_unique<Session>(GetParam());
    host = std::make_unique<HostProcess>("gtk3");
    user = std::make_unique<Client>(session->display());
    other = std::make_unique<OtherProgram>(*session, *user);
    ASSERT_TRUE(user->waitUntil([&] { return host->count("ready") == 1; }));
    host->tell(R"(open announced b1 640 91 {"id":"b1","localized_title":"Ideas","type":"brainstorm"})");
    ASSERT_TRUE(user->waitUntil([&] {
        panel = host->window("b1");
        return panel != XCB_WINDOW_NONE && user->isViewable(panel) && user->opacity(panel) == 1;
    })) << host->story();
    other->open();
    host->tell("pin b1 yes");
    std::string done;
    for (auto const action : everySequence(length)) {
        done += action;
        ASSERT_NO_FATAL_FAILURE(act(action)) << done;
        ASSERT_TRUE(user->waitUntil([&] {
            return !isMapped || (user->isViewable(panel) && user->opacity(panel) == 1);
        })) << done;
        ASSERT_TRUE(other->bringForward()) << done;
        if (!isMapped)
            continue;
        ASSERT_TRUE(user->waitUntil([&] {
            return user->hasState(panel, "_NET_WM_STATE_ABOVE") && other->isBelow(panel);
        })) << done;
    }
    act('m');
    host->tell("pin b1 no");
    act('w');
    EXPECT_TRUE(user->waitUntil([&] { return !user->hasState(panel, "_NET_WM_STATE_ABOVE"); }));
    ASSERT_TRUE(other->bringForward());
    bool const isDown = user->waitUntil([&] { return !other->isBelow(panel); });
    survey(GetParam().name, "gtk3", "pinned over every sequence", isDown ? "yes" : "no");
    EXPECT_TRUE(isDown);
}

INSTANTIATE_TEST_SUITE_P(
    Every, Pins, ::testing::ValuesIn(windowManagersUnderTest()), [](auto const& under) { return under.param.name; });

} // namespace paneweld_tests
