#include "backends/linux/host/ProgramOutput.h"

#include "backends/linux/host/OutputPipe.h"
#include "backends/linux/host/UserProcess.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <utility>

namespace backends {

using platform::NSError;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t mostBytes = 8 * 1024 * 1024;

NSError failure(std::string const& program, std::string const& cause, int code = 0)
{
    return { "NSPOSIXErrorDomain", code, program + ": " + cause };
}

std::string firstLine(std::string const& text) { return text.substr(0, text.find('\n')); }

struct Streams {
    OutputPipe output { mostBytes };
    OutputPipe complaint { mostBytes };

    bool haveOverflown() const { return output.hasOverflown() || complaint.hasOverflown(); }
    void read()
    {
        for (auto* const stream : { &output, &complaint }) {
            if (!stream->read())
                stream->closeReadingEnd();
        }
    }
};

// Its end counts and not that of its output, which a program of its own may hold open. Absent at the deadline, and when
// it has written too much.
std::optional<int> readUntilEnd(UserProcess& process, Streams& streams, Clock::time_point deadline)
{
    while (true) {
        auto const end = process.end();
        streams.read();
        if (streams.haveOverflown())
            return std::nullopt;
        if (end || Clock::now() >= deadline)
            return end;
        std::array<pollfd, 3> waits { { { process.descriptor(), POLLIN, 0 }, { streams.output.readingEnd(), POLLIN, 0 },
            { streams.complaint.readingEnd(), POLLIN, 0 } } };
        poll(waits.data(), waits.size(), pollTimeUntil(deadline));
    }
}

} // namespace

platform::Result<std::string> outputOfProgram(std::vector<std::string> arguments, Clock::time_point deadline)
{
    auto const program = arguments.front();
    Streams streams;
    if (!streams.output.open() || !streams.complaint.open())
        return failure(program, std::strerror(errno), errno);
    auto started = UserProcess::start(
        std::move(arguments), { streams.output.writingEnd(), streams.complaint.writingEnd() }, UserProcess::Group::Own);
    if (!started)
        return started.error();
    streams.output.closeWritingEnd();
    streams.complaint.closeWritingEnd();
    auto const end = readUntilEnd(started.value(), streams, deadline);
    if (!end)
        started.value().kill();
    if (streams.haveOverflown())
        return failure(program, "writes without end", EFBIG);
    if (!end)
        return failure(program, "did not end in time", ETIMEDOUT);
    if (*end != 0) {
        auto const words = firstLine(streams.complaint.text());
        return failure(program, words.empty() ? "failed: " + wordsForEnd(*end) : words);
    }
    return streams.output.text();
}

} // namespace backends
