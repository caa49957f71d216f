#include "tests/linux/ChildProcess.h"

#include "backends/linux/host/ProcessCalls.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace paneweld_tests {

ChildProcess::ChildProcess(std::vector<std::string> const& arguments, int keptDescriptor, Streams const& streams)
{
    auto texts = arguments;
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    m_id = fork();
    if (m_id != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int const nowhere = open("/dev/null", O_RDWR);
    dup2(streams.input >= 0 ? streams.input : nowhere, STDIN_FILENO);
    dup2(streams.output >= 0 ? streams.output : nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    if (keptDescriptor >= 0)
        fcntl(keptDescriptor, F_SETFD, 0);
    execvp(pointers[0], pointers.data());
    _exit(127);
}

ChildProcess::~ChildProcess() { end(SIGKILL); }

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_id(std::exchange(other.m_id, -1))
{
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept
{
    if (this != &other) {
        end(SIGKILL);
        m_id = std::exchange(other.m_id, -1);
    }
    return *this;
}

bool ChildProcess::isRunning()
{
    if (m_id <= 0)
        return false;
    if (waitpid(m_id, nullptr, WNOHANG) == 0)
        return true;
    m_id = -1;
    return false;
}

void ChildProcess::end(int signal)
{
    if (m_id <= 0)
        return;
    // A program that is still starting may let a signal go by (openbox does), so it is told again until it ends.
    auto const process = backends::openProcess(m_id);
    pollfd wait { process.number(), POLLIN, 0 };
    constexpr int patienceMilliseconds = 2000;
    do {
        kill(m_id, signal);
    } while (process.number() >= 0 && poll(&wait, 1, patienceMilliseconds) == 0);
    waitpid(m_id, nullptr, 0);
    m_id = -1;
}

} // namespace paneweld_tests
