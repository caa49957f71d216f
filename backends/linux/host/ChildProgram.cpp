#include "backends/linux/host/ChildProgram.h"

#include "backends/linux/host/SpawnSettings.h"
#include "backends/linux/host/UserEnvironment.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace backends {

using platform::NSError;

namespace {

constexpr std::size_t mostBytes = 1024 * 1024;

void closeOnce(int& descriptor)
{
    if (descriptor >= 0)
        close(std::exchange(descriptor, -1));
}

} // namespace

platform::Result<std::unique_ptr<ChildProgram>> ChildProgram::start(
    EventLoop& loop, std::vector<std::string> arguments, Output output, std::function<void(End const&)> ended)
{
    std::unique_ptr<ChildProgram> child(new ChildProgram(loop, std::move(ended)));
    if (int const cause = child->spawn(arguments, output); cause != 0)
        return NSError { "NSPOSIXErrorDomain", cause, arguments.front() + ": " + std::strerror(cause) };
    return child;
}

ChildProgram::ChildProgram(EventLoop& loop, std::function<void(End const&)> ended)
    : m_loop(loop)
    , m_ended(std::move(ended))
{
}

ChildProgram::~ChildProgram()
{
    m_processSource.end();
    m_outputSource.end();
    closeOnce(m_processDescriptor);
    closeOnce(m_outputDescriptor);
}

int ChildProgram::spawn(std::vector<std::string>& arguments, Output output)
{
    auto variables = environmentOfUser(environ);
    auto const path = pathOfProgram(arguments.front(), variables);
    if (path.empty())
        return ENOENT;
    SpawnSettings settings;
    int writing = -1;
    if (output == Output::Kept) {
        std::array<int, 2> ends {};
        if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            return errno;
        m_outputDescriptor = ends[0];
        // Above the three standard ones, which a host may have closed: there it would be in the child's way.
        writing = fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        close(ends[1]);
        // The child's end waits as programs expect it to.
        fcntl(writing, F_SETFL, 0);
        posix_spawn_file_actions_adddup2(&settings.actions, writing, STDOUT_FILENO);
    }
    int const cause = posix_spawn(&m_process, path.c_str(), &settings.actions, &settings.attributes,
        pointersTo(arguments).data(), pointersTo(variables).data());
    closeOnce(writing);
    if (cause != 0)
        return cause;
    m_processDescriptor = openProcess(m_process);
    if (m_processDescriptor < 0 && errno != ESRCH) {
        // Its end could never be told.
        int const why = errno;
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        return why;
    }
    if (m_outputDescriptor >= 0)
        m_outputSource = m_loop.whenReadable(m_outputDescriptor, [this] { readOutput(); });
    // A host that ignores the signal of children sees none after its end, nor do we.
    m_processSource = m_processDescriptor >= 0 ? m_loop.whenReadable(m_processDescriptor, [this] { mayHaveEnded(); })
                                               : m_loop.soon([this] { mayHaveEnded(); });
    return 0;
}

void ChildProgram::readOutput()
{
    std::array<char, 4096> bytes {};
    while (m_outputDescriptor >= 0) {
        auto const count = read(m_outputDescriptor, bytes.data(), bytes.size());
        if (count > 0 && m_output.size() < mostBytes) {
            m_output.append(bytes.data(), static_cast<std::size_t>(count));
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        m_outputSource.end();
        closeOnce(m_outputDescriptor);
    }
}

void ChildProgram::mayHaveEnded()
{
    int status = 0;
    pid_t result = -1;
    do
        result = waitpid(m_process, &status, WNOHANG);
    while (result < 0 && errno == EINTR);
    if (result == 0)
        return;
    m_processSource.end();
    // Its end counts and not that of its output, which a program of its own may hold open.
    readOutput();
    End end { 0, std::move(m_output) };
    if (result > 0)
        end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    // Out of reach first: the object may go.
    auto const ended = std::exchange(m_ended, nullptr);
    ended(end);
}

} // namespace backends
