#include "backends/linux/host/SystemLog.h"
#include "platform/log/OSLog.h"

#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// A line of the log whose reader stands still, against the same line to one that reads: nobody waits for a slow journal
// or terminal.

namespace {

// The journal's end of the socket. Drained between two lines, or never.
class JournalEnd {
public:
    JournalEnd()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "paneweld-bench-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address { .sun_family = AF_UNIX, .sun_path = {} };
        path().copy(address.sun_path, sizeof address.sun_path - 1);
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            std::perror("bench: no socket");
            std::exit(1);
        }
    }
    ~JournalEnd()
    {
        close(m_socket);
        std::filesystem::remove_all(m_folder);
    }
    JournalEnd(JournalEnd const&) = delete;
    JournalEnd& operator=(JournalEnd const&) = delete;

    std::string path() const { return m_folder + "/socket"; }
    void drain()
    {
        std::array<char, 4096> bytes {};
        while (recv(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) { }
    }

private:
    std::string m_folder;
    int m_socket = -1;
};

class PipeEnd {
public:
    PipeEnd()
    {
        if (pipe2(m_ends.data(), O_CLOEXEC) != 0)
            std::exit(1);
        fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
    }
    ~PipeEnd()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    PipeEnd(PipeEnd const&) = delete;
    PipeEnd& operator=(PipeEnd const&) = delete;

    int writingEnd() const { return m_ends[1]; }
    void drain()
    {
        std::array<char, 65536> bytes {};
        while (read(m_ends[0], bytes.data(), bytes.size()) > 0) { }
    }

private:
    std::array<int, 2> m_ends {};
};

template<typename Reader>
void writeLines(benchmark::State& state, backends::SystemLog::Options const& options, Reader* reader)
{
    using Clock = std::chrono::steady_clock;
    backends::SystemLog log(options);
    platform::OSLog const channel(log, "org.example.Ideas", "updates");
    auto const write = [&] {
        channel.error("version %{public}s cannot be installed: %s", { "2.0", "the disk is full" });
    };
    // More than a socket or a pipe holds.
    for (int i = 0; i < 2000 && !reader; ++i)
        write();
    for (auto _ : state) {
        auto const start = Clock::now();
        write();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        if (reader)
            reader->drain();
    }
}

void logToStalledJournal(benchmark::State& state)
{
    JournalEnd const journal;
    writeLines<JournalEnd>(state, { .journalSocket = journal.path() }, nullptr);
}
BENCHMARK(logToStalledJournal)->UseManualTime();

void logToReadingJournal(benchmark::State& state)
{
    JournalEnd journal;
    writeLines(state, { .journalSocket = journal.path() }, &journal);
}
BENCHMARK(logToReadingJournal)->Name("logToStalledJournal/floor")->UseManualTime();

void logToStalledPipe(benchmark::State& state)
{
    PipeEnd const pipe;
    writeLines<PipeEnd>(state, { .journalSocket = "", .standardError = { .descriptor = pipe.writingEnd() } }, nullptr);
}
BENCHMARK(logToStalledPipe)->UseManualTime();

void logToReadPipe(benchmark::State& state)
{
    PipeEnd pipe;
    writeLines(state, { .journalSocket = "", .standardError = { .descriptor = pipe.writingEnd() } }, &pipe);
}
BENCHMARK(logToReadPipe)->Name("logToStalledPipe/floor")->UseManualTime();

} // namespace
