#include "backends/linux/host/ProgramOutput.h"

#include "backends/linux/host/SpawnSettings.h"
#include "backends/linux/host/UserEnvironment.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace backends {

using platform::NSError;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t mostBytes = 8 * 1024 * 1024;

class Descriptor {
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    ~Descriptor() { end(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int number() const { return m_number; }
    void set(int number)
    {
        end();
        m_number = number;
    }
    void end()
    {
        if (m_number >= 0)
            close(std::exchange(m_number, -1));
    }

private:
    int m_number;
};

// What the child writes into one of its descriptors.
struct Stream {
    Descriptor reading {};
    Descriptor writing {};
    std::string text {};

    bool open()
    {
        std::array<int, 2> ends {};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            return false;
        reading.set(ends[0]);
        // Above the three standard ones, which a host may have closed: there they would be in the child's way.
        writing.set(fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        close(ends[1]);
        return writing.number() >= 0 && fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
    }
    // All that is there now. Ends itself with the last writer.
    void read()
    {
        std::array<char, 16 * 1024> bytes {};
        while (reading.number() >= 0 && text.size() <= mostBytes) {
            auto const count = ::read(reading.number(), bytes.data(), bytes.size());
            if (count > 0) {
                text.append(bytes.data(), static_cast<std::size_t>(count));
                continue;
            }
            if (count < 0 && errno == EINTR)
                continue;
            if (count == 0 || errno != EAGAIN)
                reading.end();
            return;
        }
    }
};

NSError failure(std::string const& program, std::string const& cause, int code = 0)
{
    return { "NSPOSIXErrorDomain", code, program + ": " + cause };
}

std::string firstLine(std::string const& text) { return text.substr(0, text.find('\n')); }

int millisecondsUntil(Clock::time_point deadline)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
}

class Child {
public:
    explicit Child(std::string program)
        : m_program(std::move(program))
    {
    }
    ~Child() { endAndReap(); }
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    // 0, or why not.
    int start(std::vector<std::string>& arguments)
    {
        if (!m_output.open() || !m_complaint.open())
            return errno;
        SpawnSettings settings;
        settings.makeGroup();
        posix_spawn_file_actions_adddup2(&settings.actions, m_output.writing.number(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&settings.actions, m_complaint.writing.number(), STDERR_FILENO);
        auto variables = environmentOfUser(environ);
        int const result = posix_spawnp(&m_process, m_program.c_str(), &settings.actions, &settings.attributes,
            pointersTo(arguments).data(), pointersTo(variables).data());
        m_output.writing.end();
        m_complaint.writing.end();
        if (result != 0) {
            m_process = -1;
            return result;
        }
        m_ended.set(openProcess(m_process));
        if (m_ended.number() >= 0)
            return 0;
        if (errno != ESRCH)
            return errno;
        // A host that ignores the signal of children sees none after its end, nor do we.
        m_process = -1;
        return 0;
    }

    // False at the deadline. Its end counts and not that of its output, which a program of its own may hold open.
    bool waitUntil(Clock::time_point deadline)
    {
        bool hasEnded = m_process < 0;
        while (!hasEnded && isWithinBounds()) {
            std::array<pollfd, 3> waits { { { m_ended.number(), POLLIN, 0 }, { m_output.reading.number(), POLLIN, 0 },
                { m_complaint.reading.number(), POLLIN, 0 } } };
            poll(waits.data(), waits.size(), millisecondsUntil(deadline));
            hasEnded = waits[0].revents != 0;
            m_output.read();
            m_complaint.read();
            if (!hasEnded && Clock::now() >= deadline)
                return false;
        }
        m_output.read();
        m_complaint.read();
        return true;
    }

    // The exit code or the signal that ended it, or 0 when the host has taken that.
    int reap()
    {
        siginfo_t info {};
        int result = -1;
        do
            result = waitid(P_PIDFD, static_cast<id_t>(m_ended.number()), &info, WEXITED);
        while (result < 0 && errno == EINTR);
        m_process = -1;
        return result == 0 ? info.si_status : 0;
    }

    bool isRunning() const { return m_process >= 0; }
    bool isWithinBounds() const { return m_output.text.size() <= mostBytes && m_complaint.text.size() <= mostBytes; }
    std::string takeOutput() { return std::move(m_output.text); }
    std::string const& complaint() const { return m_complaint.text; }

private:
    void endAndReap()
    {
        if (m_process < 0)
            return;
        // Not waited for yet, so the number is still its own, and that of its group.
        kill(-m_process, SIGKILL);
        if (m_ended.number() >= 0)
            reap();
        else
            waitpid(m_process, nullptr, 0);
    }

    std::string m_program;
    int m_process = -1;
    Descriptor m_ended;
    Stream m_output;
    Stream m_complaint;
};

} // namespace

platform::Result<std::string> outputOfProgram(std::vector<std::string> arguments, Clock::time_point deadline)
{
    auto const program = arguments.front();
    Child child(program);
    if (int const cause = child.start(arguments); cause != 0)
        return failure(program, std::strerror(cause), cause);
    if (!child.waitUntil(deadline))
        return failure(program, "did not end in time", ETIMEDOUT);
    if (!child.isWithinBounds())
        return failure(program, "writes without end", EFBIG);
    int const status = child.isRunning() ? child.reap() : 0;
    if (status != 0) {
        auto const words = firstLine(child.complaint());
        return failure(program, words.empty() ? "failed with status " + std::to_string(status) : words);
    }
    return child.takeOutput();
}

} // namespace backends
