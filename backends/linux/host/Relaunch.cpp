#include "backends/linux/host/Relaunch.h"

#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/ProcessCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace backends {

using platform::NSError;

namespace {

// Texts that end with a null each, as the kernel lists them.
std::vector<std::string> textsIn(std::string const& path)
{
    std::vector<std::string> texts;
    auto const bytes = readFile(path);
    std::string_view rest = bytes ? std::string_view(bytes.value()) : std::string_view();
    while (!rest.empty()) {
        auto const end = std::min(rest.find('\0'), rest.size());
        texts.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return texts;
}

std::string linkAt(char const* path)
{
    std::array<char, PATH_MAX> target {};
    auto const length = readlink(path, target.data(), target.size());
    return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : std::string();
}

// From here on until the new program runs: only calls that a process of many threads may make after fork(2).
[[noreturn]] void waitAndBecome(
    int ended, char const* program, char* const* arguments, char* const* environment, int patience) noexcept
{
    // What the app holds open would otherwise not be closed by its end: windows, locks, its own mounted image.
    constexpr int kept = STDERR_FILENO + 1;
    if (ended != kept && dup2(ended, kept) != kept)
        _exit(1);
    syscall(SYS_close_range, kept + 1, ~0U, 0);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    pollfd wait { kept, POLLIN, 0 };
    int result = 0;
    do
        result = poll(&wait, 1, patience);
    while (result < 0 && errno == EINTR);
    if (result == 1) {
        close(kept);
        execve(program, arguments, environment);
    }
    _exit(1);
}

} // namespace

Launch Launch::ofThisProcess()
{
    return { linkAt("/proc/self/exe"), textsIn("/proc/self/cmdline"), textsIn("/proc/self/environ") };
}

std::optional<NSError> launchAfter(int process, Launch launch, platform::Seconds patience)
{
    auto const failure = [&](int cause) {
        return NSError { "Updates", 4008, launch.program + ": " + std::strerror(cause) };
    };
    if (access(launch.program.c_str(), X_OK) != 0)
        return failure(errno);
    // Of an event that is long over.
    std::erase_if(launch.environment, [](std::string const& entry) {
        return entry.starts_with("DESKTOP_STARTUP_ID=") || entry.starts_with("XDG_ACTIVATION_TOKEN=");
    });
    auto const arguments = pointersTo(launch.arguments);
    auto const environment = pointersTo(launch.environment);
    auto const milliseconds = static_cast<int>(std::lround(patience.count() * 1000));
    auto const ended = openProcess(process);
    if (!ended)
        return failure(errno);
    auto const between = fork();
    if (between == 0) {
        // Nobody's child, so that nobody has to wait for it.
        auto const waiting = fork();
        if (waiting == 0)
            waitAndBecome(ended.number(), launch.program.c_str(), arguments.data(), environment.data(), milliseconds);
        _exit(waiting < 0 ? 1 : 0);
    }
    int const cause = errno;
    if (between < 0)
        return failure(cause);
    int status = 0;
    pid_t result = -1;
    do
        result = waitpid(between, &status, 0);
    while (result < 0 && errno == EINTR);
    // A host that waits for all of its children has taken the answer; then it is taken to be good.
    if (result == between && status != 0)
        return failure(EAGAIN);
    return std::nullopt;
}

} // namespace backends
