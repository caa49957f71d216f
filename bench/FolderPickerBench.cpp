#include "backends/linux/Linux.h"
#include "platform/appkit/NSOpenPanel.h"

#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>

// From the request for folders to the call that the desktop's portal gets, on the session bus that the environment
// names.

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto object = "/org/freedesktop/portal/desktop";

// A portal that notes when it was called, with a user who declines at once.
class Portal {
public:
    Portal()
    {
        std::promise<void> isReady;
        m_thread = std::thread([this, &isReady] { run(isReady); });
        isReady.get_future().wait();
    }
    ~Portal()
    {
        m_isEnding = true;
        // A call wakes it.
        sd_bus* bus = nullptr;
        sd_bus_open_user(&bus);
        sd_bus_call_method(bus, service, object, "app.bench", "End", nullptr, nullptr, "");
        sd_bus_flush_close_unref(bus);
        m_thread.join();
    }

    Clock::time_point calledAt() const { return m_calledAt; }

private:
    void run(std::promise<void>& isReady)
    {
        sd_bus* bus = nullptr;
        if (sd_bus_open_user(&bus) < 0 || sd_bus_request_name(bus, service, 0) < 0) {
            std::fprintf(stderr, "bench: no session bus, or one with a portal\n");
            std::exit(1);
        }
        sd_bus_add_filter(bus, nullptr, handle, this);
        isReady.set_value();
        while (!m_isEnding) {
            if (sd_bus_process(bus, nullptr) == 0)
                sd_bus_wait(bus, UINT64_MAX);
        }
        sd_bus_flush_close_unref(bus);
    }

    static int handle(sd_bus_message* message, void* context, sd_bus_error*) noexcept
    {
        auto& self = *static_cast<Portal*>(context);
        if (!sd_bus_message_is_method_call(message, nullptr, "OpenFile"))
            return sd_bus_message_is_method_call(message, "app.bench", "End") ? sd_bus_reply_method_return(message, "")
                                                                              : 0;
        self.m_calledAt = Clock::now();
        std::string sender = sd_bus_message_get_sender(message) + 1;
        std::replace(sender.begin(), sender.end(), '.', '_');
        sd_bus_message_skip(message, "ss");
        std::string token;
        sd_bus_message_enter_container(message, 'a', "{sv}");
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            char const* key = nullptr;
            char const* value = nullptr;
            sd_bus_message_read(message, "s", &key);
            if (std::string(key) == "handle_token") {
                sd_bus_message_read(message, "v", "s", &value);
                token = value;
            } else {
                sd_bus_message_skip(message, "v");
            }
            sd_bus_message_exit_container(message);
        }
        auto const path = std::string(object) + "/request/" + sender + "/" + token;
        sd_bus_reply_method_return(message, "o", path.c_str());
        sd_bus_emit_signal(sd_bus_message_get_bus(message), path.c_str(), "org.freedesktop.portal.Request", "Response",
            "ua{sv}", 1u, 0);
        return 1;
    }

    std::atomic<bool> m_isEnding = false;
    std::atomic<Clock::time_point> m_calledAt {};
    std::thread m_thread;
};

Portal const& thePortal()
{
    static Portal const portal;
    return portal;
}

double seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

void requestToPortal(benchmark::State& state)
{
    static auto const world = backends::makeLinuxPlatform({}).take();
    auto const& portal = thePortal();
    for (auto _ : state) {
        auto const panel = world->makeOpenPanel();
        panel->canChooseDirectories = true;
        panel->message = "Which?";
        auto const start = Clock::now();
        panel->runModal();
        state.SetIterationTime(seconds(portal.calledAt() - start));
    }
}

// A bare client that does nothing else.
void requestToPortalFloor(benchmark::State& state)
{
    auto const& portal = thePortal();
    for (auto _ : state) {
        auto const start = Clock::now();
        sd_bus* bus = nullptr;
        sd_bus_open_user(&bus);
        sd_bus_call_method(bus, service, object, "org.freedesktop.portal.FileChooser", "OpenFile", nullptr, nullptr,
            "ssa{sv}", "", "Which?", 1, "handle_token", "s", "t");
        state.SetIterationTime(seconds(portal.calledAt() - start));
        sd_bus_flush_close_unref(bus);
    }
}

BENCHMARK(requestToPortal)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(requestToPortalFloor)->Name("requestToPortal/floor")->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
