#pragma once

#include "platform/log/LogSink.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace backends {

// The system's journal (systemd-journald, its native protocol): a record's parts are fields, by which it can be looked
// for. MESSAGE, PRIORITY, SYSLOG_IDENTIFIER as everywhere; SUBSYSTEM, CATEGORY, LEVEL; FORMAT, the line with the marks
// of its values; PRIVACY, "private" when one of them is.
//
// The library's own call waits when the journal is slow. This one does not: what finds no place is lost, counted, and
// the number is told as soon as there is place again. Any thread.
class Journal {
public:
    static constexpr auto usualSocket = "/run/systemd/journal/socket";

    explicit Journal(std::string socketPath = usualSocket);
    ~Journal();
    Journal(Journal const&) = delete;
    Journal& operator=(Journal const&) = delete;

    // Whether somebody has made the socket. Sending without it loses the line.
    bool isThere() const;
    // False when there is no journal any more; true when the line was taken, or lost because the journal is slow.
    bool write(platform::LogRecord const& record);

private:
    enum class Sent { Yes, Full, Gone };
    Sent send(platform::LogRecord const& record) const;

    std::string m_path;
    int m_socket;
    std::atomic<std::uint64_t> m_lost = 0;
};

} // namespace backends
