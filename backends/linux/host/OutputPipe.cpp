#include "backends/linux/host/OutputPipe.h"

#include <array>
#include <cerrno>
#include <fcntl.h>

namespace backends {

bool OutputPipe::open()
{
    std::array<int, 2> ends {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return false;
    m_reading.reset(ends[0]);
    Descriptor const writing(ends[1]);
    // Above the three standard ones, which a host may have closed: there it would be in the program's way.
    m_writing.reset(fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    // Ours only: the program's end waits as programs expect it to.
    return m_writing && fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
}

bool OutputPipe::read()
{
    std::array<char, 16 * 1024> bytes {};
    while (m_reading && !hasOverflown()) {
        auto const count = ::read(m_reading.number(), bytes.data(), bytes.size());
        if (count > 0)
            m_text.append(bytes.data(), static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return count < 0 && errno == EAGAIN;
    }
    return false;
}

} // namespace backends
