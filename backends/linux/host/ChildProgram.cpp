#include "backends/linux/host/ChildProgram.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace backends {

namespace {

constexpr std::size_t mostBytes = 1024 * 1024;

} // namespace

platform::Result<std::unique_ptr<ChildProgram>> ChildProgram::start(
    EventLoop& loop, std::vector<std::string> arguments, Output output, Ended ended)
{
    std::unique_ptr<OutputPipe> pipe;
    if (output == Output::Kept) {
        pipe = std::make_unique<OutputPipe>(mostBytes);
        if (!pipe->open())
            return platform::NSError { "NSPOSIXErrorDomain", errno, std::strerror(errno) };
    }
    auto process = UserProcess::start(std::move(arguments), { pipe ? pipe->writingEnd() : -1, -1 });
    if (!process)
        return process.error();
    if (pipe)
        pipe->closeWritingEnd();
    return std::unique_ptr<ChildProgram>(new ChildProgram(loop, process.take(), std::move(pipe), std::move(ended)));
}

std::unique_ptr<ChildProgram> ChildProgram::watch(EventLoop& loop, UserProcess process, Ended ended)
{
    return std::unique_ptr<ChildProgram>(new ChildProgram(loop, std::move(process), nullptr, std::move(ended)));
}

ChildProgram::ChildProgram(EventLoop& loop, UserProcess process, std::unique_ptr<OutputPipe> output, Ended ended)
    : m_ended(std::move(ended))
    , m_process(std::move(process))
    , m_output(std::move(output))
{
    if (m_output)
        m_outputSource = loop.whenReadable(m_output->readingEnd(), [this] { readOutput(); });
    m_processSource = m_process.descriptor() >= 0
        ? loop.whenReadable(m_process.descriptor(), [this] { mayHaveEnded(); })
        : loop.soon([this] { mayHaveEnded(); });
}

void ChildProgram::readOutput()
{
    if (m_output->read())
        return;
    m_outputSource.end();
    m_output->closeReadingEnd();
}

void ChildProgram::mayHaveEnded()
{
    auto const status = m_process.end();
    if (!status)
        return;
    m_processSource.end();
    // Its end counts and not that of its output, which a program of its own may hold open.
    if (m_output)
        readOutput();
    End const end { *status, m_output ? m_output->text() : std::string() };
    // Out of reach first: the object may go.
    auto const ended = std::exchange(m_ended, nullptr);
    ended(end);
}

} // namespace backends
