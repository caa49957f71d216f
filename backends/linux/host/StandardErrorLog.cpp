#include "backends/linux/host/StandardErrorLog.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <poll.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>

namespace backends {

using platform::LogLevel;

namespace {

// What a pipe that is ready takes without blocking (pipe(7)).
constexpr std::size_t longestLine = PIPE_BUF;
constexpr std::string_view cutMark = "...";

// A line is a line: what would break it, or the terminal, is written as an escape.
void appendEscaped(std::string& line, std::string_view text)
{
    for (char const character : text) {
        auto const byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7F) {
            line += character;
            continue;
        }
        char escape[8];
        if (character == '\n')
            std::snprintf(escape, sizeof escape, "\\n");
        else
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
        line += escape;
    }
}

// Writing to a reader that has gone would end the host with SIGPIPE, whose handling is the host's own.
class PipeSignalBlocked {
public:
    PipeSignalBlocked()
    {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending {};
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    ~PipeSignalBlocked()
    {
        timespec const now {};
        if (!m_wasPending)
            sigtimedwait(&m_pipe, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    PipeSignalBlocked(PipeSignalBlocked const&) = delete;
    PipeSignalBlocked& operator=(PipeSignalBlocked const&) = delete;

private:
    sigset_t m_pipe {};
    sigset_t m_before {};
    bool m_wasPending = false;
};

} // namespace

StandardErrorLog::Options StandardErrorLog::optionsFromEnvironment(LogLevel otherwise)
{
    Options options;
    options.level = otherwise;
    char const* level = std::getenv("PANEWELD_LOG");
    std::string_view const word = level ? level : "";
    for (auto const candidate : { LogLevel::Debug, LogLevel::Info, LogLevel::Default, LogLevel::Error }) {
        if (word == nameOf(candidate))
            options.level = candidate;
    }
    if (word == "off")
        options.level.reset();
    char const* showsPrivate = std::getenv("PANEWELD_LOG_PRIVATE");
    options.showsPrivateValues = showsPrivate && std::string_view(showsPrivate) == "1";
    return options;
}

bool StandardErrorLog::accepts(LogLevel level) const { return m_options.level && level >= *m_options.level; }

void StandardErrorLog::write(platform::LogRecord const& record)
{
    if (!accepts(record.level))
        return;
    std::string line = "paneweld ";
    line += nameOf(record.level);
    line += ' ';
    appendEscaped(line, record.subsystem);
    line += ':';
    appendEscaped(line, record.category);
    line += ' ';
    appendEscaped(line, record.message);
    if (line.size() >= longestLine)
        line.replace(longestLine - cutMark.size() - 1, std::string::npos, cutMark);
    line += '\n';
    // The descriptor is the host's, so it cannot be made one that never blocks: it is asked before. What is ready takes
    // as much as the longest line. In one call, so that lines of several threads do not mix.
    auto const errorBefore = errno;
    PipeSignalBlocked const blocked;
    m_lock.with([&] {
        pollfd wait { m_options.descriptor, POLLOUT, 0 };
        bool const isReady = poll(&wait, 1, 0) == 1 && (wait.revents & POLLOUT);
        if (isReady) [[maybe_unused]]
            auto const bytes = ::write(m_options.descriptor, line.data(), line.size());
    });
    errno = errorBefore;
}

} // namespace backends
