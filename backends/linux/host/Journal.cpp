#include "backends/linux/host/Journal.h"

#include "platform/foundation/Text.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::LogLevel;

namespace {

// Far below what a socket takes in one piece, and far above what somebody wants to read.
constexpr std::size_t longestText = 48 * 1024;

// As syslog(3) counts.
char priorityOf(LogLevel level)
{
    switch (level) {
    case LogLevel::Debug:
        return '7';
    case LogLevel::Info:
        return '6';
    case LogLevel::Default:
        return '5';
    case LogLevel::Error:
        return '3';
    case LogLevel::Fault:
        return '2';
    }
    return '5';
}

void appendField(std::string& datagram, std::string_view name, std::string_view value)
{
    datagram += name;
    if (value.find('\n') == std::string_view::npos) {
        datagram += '=';
    } else {
        // A value of several lines has its length before it, the least significant byte first.
        datagram += '\n';
        for (std::uint64_t rest = value.size(), i = 0; i < 8; ++i, rest >>= 8)
            datagram += static_cast<char>(rest & 0xFF);
    }
    datagram += value;
    datagram += '\n';
}

bool fits(std::string const& path) { return !path.empty() && path.size() < sizeof(sockaddr_un::sun_path); }

} // namespace

Journal::Journal(std::string socketPath)
    : m_path(std::move(socketPath))
    , m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
}

Journal::~Journal()
{
    if (m_socket >= 0)
        close(m_socket);
}

bool Journal::isThere() const { return m_socket >= 0 && fits(m_path) && access(m_path.c_str(), F_OK) == 0; }

bool Journal::write(platform::LogRecord const& record)
{
    if (auto const lost = m_lost.exchange(0); lost > 0) {
        auto const words = std::to_string(lost) + " lines were lost, the journal is slow";
        auto const told = send({ LogLevel::Error, record.subsystem, record.category, words });
        if (told != Sent::Yes) {
            // Where this finds no place, the line finds none either.
            m_lost += lost + (told == Sent::Full ? 1 : 0);
            return told != Sent::Gone;
        }
    }
    auto const sent = send(record);
    if (sent == Sent::Full)
        ++m_lost;
    return sent != Sent::Gone;
}

Journal::Sent Journal::send(platform::LogRecord const& record) const
{
    if (m_socket < 0 || !fits(m_path))
        return Sent::Gone;
    std::string datagram;
    auto const message = std::string_view(record.message).substr(0, longestText);
    appendField(datagram, "MESSAGE", platform::repairedUTF8(message));
    appendField(datagram, "PRIORITY", std::string(1, priorityOf(record.level)));
    appendField(datagram, "SYSLOG_IDENTIFIER", program_invocation_short_name);
    appendField(datagram, "SUBSYSTEM", record.subsystem);
    appendField(datagram, "CATEGORY", record.category);
    appendField(datagram, "LEVEL", nameOf(record.level));
    if (!record.format.empty())
        appendField(datagram, "FORMAT", record.format);
    appendField(datagram, "PRIVACY", record.hasPrivateValues ? "private" : "public");
    // Named each time: a journal that is started again has another socket under the same name.
    sockaddr_un address { .sun_family = AF_UNIX, .sun_path = {} };
    m_path.copy(address.sun_path, sizeof address.sun_path - 1);
    auto const errorBefore = errno;
    auto const result = sendto(m_socket, datagram.data(), datagram.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
        reinterpret_cast<sockaddr const*>(&address), sizeof address);
    auto const cause = errno;
    errno = errorBefore;
    if (result >= 0)
        return Sent::Yes;
    return cause == EAGAIN || cause == ENOBUFS || cause == EINTR ? Sent::Full : Sent::Gone;
}

} // namespace backends
