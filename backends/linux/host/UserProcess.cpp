#include "backends/linux/host/UserProcess.h"

#include "backends/linux/host/ProcessCalls.h"
#include "backends/linux/host/UserEnvironment.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace backends {

using platform::NSError;
using Clock = std::chrono::steady_clock;

namespace {

// What posix_spawn(3) is told, freed in any case.
struct SpawnSettings {
    posix_spawn_file_actions_t actions {};
    posix_spawnattr_t attributes {};

    SpawnSettings(UserProcess::Streams streams, UserProcess::Group group)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (streams.output >= 0)
            posix_spawn_file_actions_adddup2(&actions, streams.output, STDOUT_FILENO);
        if (streams.complaint >= 0)
            posix_spawn_file_actions_adddup2(&actions, streams.complaint, STDERR_FILENO);
        posix_spawnattr_init(&attributes);
        sigset_t none {};
        sigemptyset(&none);
        sigset_t all {};
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        int const groupFlag = group == UserProcess::Group::Own ? POSIX_SPAWN_SETPGROUP : 0;
        posix_spawnattr_setflags(
            &attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | groupFlag));
    }
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;
};

NSError failure(std::string const& program, int cause)
{
    return { "NSPOSIXErrorDomain", cause, program + ": " + std::strerror(cause) };
}

} // namespace

platform::Result<UserProcess> UserProcess::start(std::vector<std::string> arguments, Streams streams, Group group)
{
    auto const program = arguments.front();
    auto variables = environmentOfUser(environ);
    auto const path = pathOfProgram(program, variables);
    if (path.empty())
        return failure(program, ENOENT);
    SpawnSettings const settings(streams, group);
    int number = -1;
    int const cause = posix_spawn(&number, path.c_str(), &settings.actions, &settings.attributes,
        pointersTo(arguments).data(), pointersTo(variables).data());
    if (cause != 0)
        return failure(program, cause);
    UserProcess process(number, group);
    process.m_ended = openProcess(number);
    if (process.m_ended)
        return process;
    // A host that ignores the signal of children sees none after its end, nor do we.
    if (errno == ESRCH) {
        process.m_end = 0;
        return process;
    }
    // Its end could never be told.
    int const why = errno;
    ::kill(number, SIGKILL);
    waitpid(number, nullptr, 0);
    return failure(program, why);
}

std::optional<int> UserProcess::end()
{
    if (m_end)
        return m_end;
    siginfo_t info {};
    int result = -1;
    do
        result = waitid(P_PIDFD, static_cast<id_t>(m_ended.number()), &info, WEXITED | WNOHANG);
    while (result < 0 && errno == EINTR);
    if (result == 0 && info.si_pid == 0)
        return std::nullopt;
    // Without a result the host has waited for it.
    if (result != 0)
        m_end = 0;
    else
        m_end = info.si_code == CLD_EXITED ? info.si_status : -info.si_status;
    return m_end;
}

std::optional<int> UserProcess::waitUntil(Clock::time_point deadline)
{
    while (!end()) {
        pollfd wait { m_ended.number(), POLLIN, 0 };
        if (poll(&wait, 1, pollTimeUntil(deadline)) == 0 && Clock::now() >= deadline)
            break;
    }
    return end();
}

void UserProcess::kill()
{
    if (end())
        return;
    // Not waited for yet, so the number is still its own, and that of its group.
    ::kill(m_group == Group::Own ? -m_process : m_process, SIGKILL);
    waitUntil(Clock::time_point::max());
}

std::string wordsForEnd(int end)
{
    return end >= 0 ? "exit code " + std::to_string(end) : "signal " + std::to_string(-end);
}

int pollTimeUntil(Clock::time_point deadline)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
}

} // namespace backends
