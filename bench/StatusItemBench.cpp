#include <benchmark/benchmark.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

// From the start of an app's process to its status item on the desktop's list, which this process keeps, on the session
// bus that the environment names; and what the app costs from then on.

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto service = "org.kde.StatusNotifierWatcher";
constexpr int patienceMilliseconds = 10000;
constexpr int settleMilliseconds = 300;
constexpr int idleSeconds = 5;

[[noreturn]] void fail(char const* reason)
{
    std::fprintf(stderr, "bench: %s\n", reason);
    std::exit(1);
}

// The desktop's list of status items, with a panel that shows it.
class Watcher {
public:
    static Watcher& shared()
    {
        static Watcher watcher;
        return watcher;
    }

    // When the next item came.
    Clock::time_point waitForItem()
    {
        for (m_hasItem = false; !m_hasItem;)
            turn(patienceMilliseconds);
        return m_arrival;
    }
    // Answers what is asked until nothing has been asked for a while.
    void settle()
    {
        while (turn(settleMilliseconds)) { }
    }

private:
    Watcher()
    {
        static sd_bus_vtable const table[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", &Watcher::add, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", &Watcher::hasHost, 0, 0),
            SD_BUS_VTABLE_END,
        };
        if (sd_bus_open_user(&m_bus) < 0
            || sd_bus_add_object_vtable(m_bus, nullptr, "/StatusNotifierWatcher", service, table, this) < 0
            || sd_bus_request_name(m_bus, service, 0) < 0)
            fail("no session bus without a list of status items");
    }

    static int add(sd_bus_message* call, void* self, sd_bus_error*)
    {
        static_cast<Watcher*>(self)->m_arrival = Clock::now();
        static_cast<Watcher*>(self)->m_hasItem = true;
        return sd_bus_reply_method_return(call, "");
    }
    static int hasHost(sd_bus*, char const*, char const*, char const*, sd_bus_message* reply, void*, sd_bus_error*)
    {
        return sd_bus_message_append(reply, "b", 1);
    }

    // False when nothing came for so long.
    bool turn(int milliseconds)
    {
        if (sd_bus_process(m_bus, nullptr) > 0)
            return true;
        pollfd wait { sd_bus_get_fd(m_bus), static_cast<short>(sd_bus_get_events(m_bus)), 0 };
        if (poll(&wait, 1, milliseconds) > 0)
            return true;
        if (milliseconds == patienceMilliseconds)
            fail("no item came");
        return false;
    }

    sd_bus* m_bus = nullptr;
    bool m_hasItem = false;
    Clock::time_point m_arrival;
};

// An app that has been started. It ends with this.
class App {
public:
    App(std::string const& path, bool hasDisplay)
        : m_start(Clock::now())
    {
        std::vector<char*> variables;
        for (char** variable = environ; *variable; ++variable) {
            if (hasDisplay || std::strncmp(*variable, "DISPLAY=", 8) != 0)
                variables.push_back(*variable);
        }
        variables.push_back(nullptr);
        std::string program = path, bundle = PANEWELD_BENCH_BUNDLE;
        char* arguments[] = { program.data(), bundle.data(), nullptr };
        // Without a display the library says that there are no windows, each time.
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        if (posix_spawn(&m_id, path.c_str(), &actions, nullptr, arguments, variables.data()) != 0)
            fail("an app could not be started");
        posix_spawn_file_actions_destroy(&actions);
    }
    ~App()
    {
        kill(m_id, SIGKILL);
        waitpid(m_id, nullptr, 0);
    }
    App(App const&) = delete;
    App& operator=(App const&) = delete;

    Clock::time_point start() const { return m_start; }
    // A number of /proc/PID/FILE, behind its name.
    double number(std::string const& file, std::string const& name) const
    {
        std::ifstream lines("/proc/" + std::to_string(m_id) + "/" + file);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(name + ":"))
                return std::strtod(line.c_str() + name.size() + 1, nullptr);
        }
        fail("the app has gone");
    }

private:
    pid_t m_id = 0;
    Clock::time_point m_start;
};

void startToItem(benchmark::State& state, std::string const& program, bool hasDisplay)
{
    auto& watcher = Watcher::shared();
    double kilobytes = 0, threads = 0;
    for (auto _ : state) {
        App const app(PANEWELD_BENCH_PROGRAMS "/" + program, hasDisplay);
        auto const arrival = watcher.waitForItem();
        state.SetIterationTime(std::chrono::duration<double>(arrival - app.start()).count());
        state.PauseTiming();
        watcher.settle();
        kilobytes = app.number("smaps_rollup", "Anonymous");
        threads = app.number("status", "Threads");
        state.ResumeTiming();
    }
    state.counters["anonymousKB"] = kilobytes;
    state.counters["threads"] = threads;
}

// How often an app with an item wakes up in some seconds in which nothing happens.
void idle(benchmark::State& state, std::string const& program)
{
    auto& watcher = Watcher::shared();
    for (auto _ : state) {
        App const app(PANEWELD_BENCH_PROGRAMS "/" + program, true);
        watcher.waitForItem();
        watcher.settle();
        auto const before = app.number("status", "voluntary_ctxt_switches");
        poll(nullptr, 0, idleSeconds * 1000);
        state.counters["wakeUps"] = app.number("status", "voluntary_ctxt_switches") - before;
        state.SetIterationTime(idleSeconds);
    }
}

// So many starts in one run that the settling in between does not take minutes.
constexpr int starts = 3;

BENCHMARK_CAPTURE(startToItem, screenless, "statusItem", false)->UseManualTime()->Iterations(starts);
BENCHMARK_CAPTURE(startToItem, screenlessFloor, "statusItemFloor", false)
    ->Name("startToItem/screenless/floor")
    ->UseManualTime()
    ->Iterations(starts);
BENCHMARK_CAPTURE(startToItem, x11, "statusItem", true)->UseManualTime()->Iterations(starts);
BENCHMARK_CAPTURE(startToItem, x11Floor, "statusItemFloor", true)
    ->Name("startToItem/x11/floor")
    ->UseManualTime()
    ->Iterations(starts);
BENCHMARK_CAPTURE(idle, item, "statusItem")->UseManualTime()->Iterations(1)->Repetitions(1);

} // namespace
