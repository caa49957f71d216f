#include "backends/linux/Linux.h"
#include "iOS/GlobalShortcutController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "platform/carbon/EventHotKeys.h"
#include "platform/foundation/NotificationCenter.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <poll.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

// From a key press at the server to whoever waits for it, on the display that DISPLAY names.

namespace {

using Clock = std::chrono::steady_clock;

constexpr xcb_keycode_t superKey = 133;
// F1 and F2, at their positions.
constexpr xcb_keycode_t ourKey = 67;
constexpr std::uint32_t ourVirtualKeyCode = 122;
constexpr xcb_keycode_t bareKey = 68;

// A user whose fingers are as fast as a program.
class User {
public:
    User()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection)) {
            std::fprintf(stderr, "bench: no X server\n");
            std::exit(1);
        }
        press(superKey, true);
    }
    ~User()
    {
        press(superKey, false);
        xcb_disconnect(m_connection);
    }
    User(User const&) = delete;
    User& operator=(User const&) = delete;

    void press(xcb_keycode_t key, bool isDown)
    {
        xcb_test_fake_input(m_connection, isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key, 0, XCB_WINDOW_NONE, 0, 0, 0);
        xcb_flush(m_connection);
    }

private:
    xcb_connection_t* m_connection;
};

// Measures the time until the press has arrived, which waiting for it tells; the release goes by unmeasured.
template<typename WaitForPress, typename WaitForRelease>
void measure(benchmark::State& state, xcb_keycode_t key, WaitForPress waitForPress, WaitForRelease waitForRelease)
{
    User user;
    for (auto _ : state) {
        auto const start = Clock::now();
        user.press(key, true);
        Clock::time_point const arrival = waitForPress();
        state.SetIterationTime(std::chrono::duration<double>(arrival - start).count());
        user.press(key, false);
        waitForRelease();
    }
}

// The whole road: server, backend, registry, controller, notification, the host's observer.
void pressToObserver(benchmark::State& state)
{
    static auto const world = backends::makeLinuxPlatform({}).take();
    static auto const controller = paneweld::GlobalShortcutController::create(*world);
    auto& center = platform::NotificationCenter::defaultCenter();
    std::optional<Clock::time_point> triggered;
    platform::Observation const observation(center,
        { paneweld::NotificationName::globalNewBrainstormShortcutTriggered(), nullptr, {} },
        [&](auto const&) { triggered = Clock::now(); });
    int released = 0;
    auto const handler = world->eventHotKeys()->eventDispatcherTarget().installEventHandler(
        { { platform::kEventClassKeyboard, platform::kEventHotKeyReleased } }, [&](auto const*) {
            ++released;
            return platform::eventNotHandledErr;
        });
    auto const pumpUntil = [&](auto const& condition) {
        while (!condition()) {
            pollfd wait { world->pollableDescriptor(), POLLIN, 0 };
            poll(&wait, 1, -1);
            world->dispatch();
        }
    };
    auto const tell = [&](bool isEnabled) {
        center.post({ paneweld::NotificationName::updateGlobalNewBrainstormShortcut(), nullptr,
            paneweld::UpdateGlobalNewBrainstormShortcut { ourVirtualKeyCode, platform::cmdKey, isEnabled }
                .userInfo() });
    };
    tell(true);
    pumpUntil([&] { return world->eventHotKeys()->truth().lastRegistration != platform::HotKeyResult::Pending; });
    auto const waitForPress = [&] {
        triggered.reset();
        pumpUntil([&] { return triggered.has_value(); });
        return *triggered;
    };
    auto const waitForRelease = [&] { pumpUntil([&, before = released] { return released > before; }); };
    measure(state, ourKey, waitForPress, waitForRelease);
    tell(false);
    world->dispatch();
}
BENCHMARK(pressToObserver)->UseManualTime();

// A program with one grab and nothing else.
void pressToObserverFloor(benchmark::State& state)
{
    auto* const connection = xcb_connect(nullptr, nullptr);
    auto const root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_grab_key(connection, 0, root, XCB_MOD_MASK_4, bareKey, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    auto const waitFor = [&](int type) -> Clock::time_point {
        while (true) {
            auto* const event = xcb_wait_for_event(connection);
            bool const isIt = (event->response_type & 0x7F) == type;
            free(event);
            if (isIt)
                return Clock::now();
        }
    };
    measure(
        state, bareKey, [&] { return waitFor(XCB_KEY_PRESS); }, [&] { return waitFor(XCB_KEY_RELEASE); });
    xcb_disconnect(connection);
}
BENCHMARK(pressToObserverFloor)->Name("pressToObserver/floor")->UseManualTime();

} // namespace
