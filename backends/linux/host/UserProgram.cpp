#include "backends/linux/host/UserProgram.h"

#include "backends/linux/host/SpawnSettings.h"
#include "backends/linux/host/UserEnvironment.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace backends {

using platform::NSError;
using Clock = std::chrono::steady_clock;

namespace {

NSError failure(std::string const& program, std::string const& cause)
{
    return { "NSPOSIXErrorDomain", 0, program + ": " + cause };
}

bool waitFor(int descriptor, Clock::time_point deadline)
{
    while (true) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd wait { descriptor, POLLIN, 0 };
        int const result = poll(&wait, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000)));
        if (result > 0)
            return true;
        if (Clock::now() >= deadline)
            return false;
    }
}

siginfo_t waitForEnd(RunningProgram const& program)
{
    siginfo_t info {};
    int result = -1;
    do
        result = waitid(P_PID, static_cast<id_t>(program.process), &info, WEXITED | WNOHANG);
    while (result < 0 && errno == EINTR);
    // A host that waits for all children may have taken the status.
    return result == 0 ? info : siginfo_t {};
}

} // namespace

platform::Result<RunningProgram> startUserProgram(std::vector<std::string> arguments, Clock::time_point deadline)
{
    auto const name = arguments.front();
    auto variables = environmentOfUser(environ);
    SpawnSettings const settings;
    RunningProgram program;
    int const cause = posix_spawnp(&program.process, name.c_str(), &settings.actions, &settings.attributes,
        pointersTo(arguments).data(), pointersTo(variables).data());
    if (cause != 0)
        return failure(name, std::strerror(cause));
    program.descriptor = openProcess(program.process);
    // Gone already, where the host ignores its children.
    if (program.descriptor < 0)
        return RunningProgram {};
    if (!waitFor(program.descriptor, deadline))
        return program;
    auto const end = waitForEnd(program);
    close(program.descriptor);
    if (end.si_pid != 0 && end.si_status != 0)
        return failure(
            name, (end.si_code == CLD_EXITED ? "exit code " : "ended by signal ") + std::to_string(end.si_status));
    return RunningProgram {};
}

void reap(RunningProgram const& program)
{
    waitForEnd(program);
    close(program.descriptor);
}

} // namespace backends
