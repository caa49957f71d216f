#include "backends/linux/host/StandardErrorLog.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11HotKeys.h"
#include "backends/linux/x11/X11Keyboard.h"
#include "platform/carbon/EventHotKeys.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/KeyboardOwner.h"

#include <chrono>
#include <gtest/gtest.h>
#include <poll.h>
#include <vector>

namespace paneweld_tests {

namespace {

constexpr std::uint32_t n = 45;
constexpr xcb_keycode_t nKey = 57;

// Hot keys on a wire of their own, where the server can be kept from telling repetitions apart.
class Repeat : public testing::TestWithParam<bool> {
protected:
    Repeat()
        : loop(backends::EventLoop::create().take())
        , connection(backends::Connection::open(desktop.display(), *loop, { log, "test", "x11" }).take())
        , keyboard(*connection, {})
        , hotKeys(*connection, keyboard, *loop)
        , user(desktop.display())
    {
        connection->start(
            [this](auto const& event) {
                auto const type = event.response_type & 0x7F;
                keyPresses += type == XCB_KEY_PRESS;
                keyReleases += type == XCB_KEY_RELEASE;
                keyboard.handle(event);
                hotKeys.handle(event);
            },
            [] {});
        hotKeys.setObserver({ [this](auto, bool isDown) { heard.push_back(isDown); }, [] {} });
        using Detectable = backends::X11Keyboard::DetectableRepeat;
        keyboard.start([this] { hotKeys.keyboardDidChange(); }, GetParam() ? Detectable::Wanted : Detectable::Unwanted);
        connection->roundTrip();
        hotKeys.add(1, n, platform::cmdKey);
        connection->roundTrip();
        // A fast keyboard: the first repetition after 60 ms, then one every 5 ms.
        user.setRepeat(60, 5);
    }

    bool pumpUntil(std::function<bool()> const& condition)
    {
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition() && std::chrono::steady_clock::now() < end) {
            pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
            poll(&wait, 1, 5);
            loop->dispatch();
        }
        return condition();
    }

    Desktop desktop;
    backends::StandardErrorLog log;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<backends::Connection> connection;
    backends::X11Keyboard keyboard;
    backends::X11HotKeys hotKeys;
    KeyboardOwner user;
    int keyPresses = 0;
    int keyReleases = 0;
    std::vector<bool> heard;
};

TEST_P(Repeat, AHeldKeyIsOneDownAndOneUp)
{
    bool const isDetectable = GetParam();
    user.press(leftSuperKey);
    user.press(nKey);
    user.sync();
    ASSERT_TRUE(pumpUntil([&] { return keyPresses >= 100; }));
    // The server does what this test is about.
    EXPECT_EQ(keyReleases > 90, !isDetectable) << keyReleases;
    EXPECT_EQ(keyReleases == 0, isDetectable) << keyReleases;
    EXPECT_EQ(heard, (std::vector<bool> { true }));
    user.release(nKey);
    user.release(leftSuperKey);
    user.sync();
    auto const released = std::chrono::steady_clock::now();
    ASSERT_TRUE(pumpUntil([&] { return heard.size() == 2; }));
    EXPECT_LT(std::chrono::steady_clock::now() - released, std::chrono::milliseconds(20));
    EXPECT_EQ(heard, (std::vector<bool> { true, false }));
}

TEST_P(Repeat, QuickPressesAreAllCounted)
{
    constexpr std::size_t strikes = 50;
    user.press(leftSuperKey);
    for (std::size_t i = 0; i < strikes; ++i) {
        user.press(nKey);
        user.release(nKey);
        user.sync();
        // Without the server's help two strikes in one millisecond are one.
        if (!GetParam())
            user.pause();
    }
    user.release(leftSuperKey);
    user.sync();
    pumpUntil([&] { return heard.size() == 2 * strikes; });
    ASSERT_EQ(heard.size(), 2 * strikes);
    for (std::size_t i = 0; i < heard.size(); ++i)
        EXPECT_EQ(heard[i], i % 2 == 0);
}

INSTANTIATE_TEST_SUITE_P(Servers, Repeat, testing::Bool(),
    [](auto const& server) { return server.param ? "TellsRepetitions" : "DoesNotTellRepetitions"; });

} // namespace

} // namespace paneweld_tests
