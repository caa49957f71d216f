#include "backends/linux/Linux.h"
#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/NotificationCenter.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/timerfd.h>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

// A panel's height, from the host's request to the X server's word that the window has it, on the display that DISPLAY
// names; beside it a program that does nothing but that.

namespace {

using namespace paneweld;
using Clock = std::chrono::steady_clock;
using Free = void (*)(void*);

constexpr int framesPerAnimation = 15;
constexpr std::chrono::nanoseconds frameTime { 1'000'000'000 / 60 };

// The host's own connection, which makes windows and hears what becomes of them.
class Host {
public:
    static Host& shared()
    {
        static Host host;
        return host;
    }

    xcb_window_t make(std::string const& title)
    {
        auto const window = xcb_generate_id(m_connection);
        std::uint32_t const events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, root(), 100, 100, 400, 100, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
            static_cast<std::uint32_t>(title.size()), title.data());
        finish();
        return window;
    }

    void map(xcb_window_t window)
    {
        xcb_map_window(m_connection, window);
        finish();
    }

    void setHeight(xcb_window_t window, std::uint32_t height)
    {
        xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_HEIGHT, &height);
        xcb_flush(m_connection);
    }

    // What the window's height is said to be, when something has been said.
    std::optional<int> heardHeight(xcb_window_t window)
    {
        std::optional<int> height;
        while (auto* const event = xcb_poll_for_event(m_connection)) {
            std::unique_ptr<xcb_generic_event_t, Free> const owned(event, std::free);
            auto const* const configured = reinterpret_cast<xcb_configure_notify_event_t const*>(event);
            if ((event->response_type & 0x7F) == XCB_CONFIGURE_NOTIFY && configured->window == window)
                height = configured->height;
        }
        return height;
    }

    int descriptor() const { return xcb_get_file_descriptor(m_connection); }

private:
    Host()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection)) {
            std::fprintf(stderr, "bench: no X server\n");
            std::exit(1);
        }
    }

    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root; }
    void finish() { std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

    xcb_connection_t* m_connection;
};

// The library at work on a panel of the host.
class Panel {
public:
    static Panel& shared()
    {
        static Panel panel;
        return panel;
    }

    xcb_window_t window() const { return m_window; }
    int descriptor() const { return m_world->pollableDescriptor(); }
    void dispatch() { m_world->dispatch(); }

    // Until the latest request has been carried out as far as the library is concerned.
    void settle()
    {
        runUntil([this] { return m_ended >= m_requested; });
    }

    void request(int height, bool isAnimated)
    {
        ++m_requested;
        BrainstormWindowPreferredHeightDidChange payload { "b1", isAnimated };
        payload.preferredHeight = height;
        payload.maxHeight = 900;
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, payload.userInfo() });
        dispatch();
    }

private:
    Panel()
        : m_world(backends::makeLinuxPlatform({}).take())
        , m_controller(AppKitController::create(*m_world))
        , m_window(Host::shared().make(WindowIdentifier::create("b1", "brainstorm", "Panel")->encoded()))
    {
        m_world->announceX11Window(m_window);
        Host::shared().map(m_window);
        runUntil([this] {
            auto const shown = m_world->adoptX11Window(m_window);
            return shown && shown->alphaValue() >= 1;
        });
    }

    void runUntil(std::function<bool()> const& condition)
    {
        while (!condition()) {
            pollfd wait { descriptor(), POLLIN, 0 };
            poll(&wait, 1, 1000);
            dispatch();
        }
    }

    int m_requested = 0;
    int m_ended = 0;
    platform::Observation m_resizes { platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowDidResize(), nullptr, {} }, [this](auto const&) { ++m_ended; } };
    std::unique_ptr<backends::LinuxPlatform> m_world;
    std::shared_ptr<AppKitController> m_controller;
    xcb_window_t m_window;
};

xcb_window_t bareWindow()
{
    static xcb_window_t const window = [] {
        auto const made = Host::shared().make("bare");
        Host::shared().map(made);
        return made;
    }();
    return window;
}

// Until the window has the height, running what else is to be run; calls with each height on the way.
void waitForHeight(xcb_window_t window, int wanted, int otherDescriptor, std::function<void()> const& other,
    std::function<void(int)> const& heard)
{
    auto& host = Host::shared();
    for (std::optional<int> height; height != wanted;) {
        pollfd wait[] { { host.descriptor(), POLLIN, 0 }, { otherDescriptor, POLLIN, 0 } };
        if (poll(wait, otherDescriptor < 0 ? 1 : 2, 10000) == 0) {
            std::fprintf(stderr, "bench: the window stays at another height\n");
            std::exit(1);
        }
        if (wait[1].revents != 0)
            other();
        height = host.heardHeight(window);
        if (height && heard)
            heard(*height);
    }
}

// One request without an animation, until the server has said that it is so.
template<typename Request, typename Settle>
void measureRequest(benchmark::State& state, xcb_window_t window, Request const& request, Settle const& settle)
{
    int height = 300;
    for (auto _ : state) {
        height = height == 300 ? 301 : 300;
        auto const start = Clock::now();
        request(height);
        waitForHeight(window, height, -1, {}, {});
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        settle();
    }
}

void requestToServer(benchmark::State& state)
{
    auto& panel = Panel::shared();
    // The first one may have to wait for the panel's fade-in.
    panel.request(200, false);
    panel.settle();
    auto const request = [&](int height) { panel.request(height, false); };
    measureRequest(state, panel.window(), request, [&] { panel.settle(); });
}
BENCHMARK(requestToServer)->Name("height/requestToServer")->UseManualTime();

void requestToServerFloor(benchmark::State& state)
{
    auto const request = [](int height) { Host::shared().setHeight(bareWindow(), static_cast<std::uint32_t>(height)); };
    measureRequest(state, bareWindow(), request, [] {});
}
BENCHMARK(requestToServerFloor)->Name("height/requestToServer/floor")->UseManualTime();

// How evenly an animation's heights come.
class Rhythm {
public:
    void begin() { m_last.reset(); }
    void beat()
    {
        auto const now = Clock::now();
        if (m_last)
            m_errors.push_back(std::fabs(std::chrono::duration<double, std::micro>(now - *m_last - frameTime).count()));
        m_last = now;
        ++m_beats;
    }
    void tell(benchmark::State& state)
    {
        std::sort(m_errors.begin(), m_errors.end());
        state.counters["frames"] = static_cast<double>(m_beats) / static_cast<double>(state.iterations());
        state.counters["jitter_us"]
            = std::accumulate(m_errors.begin(), m_errors.end(), 0.0) / static_cast<double>(m_errors.size());
        state.counters["jitter95_us"] = m_errors[m_errors.size() * 95 / 100];
    }

private:
    std::optional<Clock::time_point> m_last;
    std::vector<double> m_errors;
    int m_beats = 0;
};

void animation(benchmark::State& state)
{
    auto& panel = Panel::shared();
    Rhythm rhythm;
    int height = 100;
    panel.request(height, false);
    panel.settle();
    for (auto _ : state) {
        height = height == 100 ? 700 : 100;
        rhythm.begin();
        auto const start = Clock::now();
        panel.request(height, true);
        waitForHeight(
            panel.window(), height, panel.descriptor(), [&] { panel.dispatch(); }, [&](int) { rhythm.beat(); });
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        panel.settle();
    }
    rhythm.tell(state);
}
BENCHMARK(animation)->Name("height/animation")->UseManualTime()->Iterations(20);

// A timer that asks for the next height each time.
void animationFloor(benchmark::State& state)
{
    auto& host = Host::shared();
    auto const timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    Rhythm rhythm;
    int end = 100;
    host.setHeight(bareWindow(), 100);
    for (auto _ : state) {
        auto const begin = end;
        end = begin == 100 ? 700 : 100;
        int frame = 0;
        auto const next = [&] {
            std::uint64_t expirations = 0;
            if (read(timer, &expirations, sizeof expirations) != sizeof expirations || frame == framesPerAnimation)
                return;
            ++frame;
            auto const height = begin + (end - begin) * frame / framesPerAnimation;
            host.setHeight(bareWindow(), static_cast<std::uint32_t>(height));
        };
        itimerspec const rate { { 0, frameTime.count() }, { 0, frameTime.count() } };
        timerfd_settime(timer, 0, &rate, nullptr);
        rhythm.begin();
        auto const start = Clock::now();
        waitForHeight(bareWindow(), end, timer, next, [&](int) { rhythm.beat(); });
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    close(timer);
    rhythm.tell(state);
}
BENCHMARK(animationFloor)->Name("height/animation/floor")->UseManualTime()->Iterations(20);

} // namespace
