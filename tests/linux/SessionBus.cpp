#include "tests/linux/SessionBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace paneweld_tests {

SessionBus::SessionBus()
{
    std::array<int, 2> ends {};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    m_daemon = ChildProcess({ "dbus-daemon", "--session", "--nofork", "--nopidfile", "--nosyslog",
                                "--print-address=" + std::to_string(ends[1]) },
        ends[1]);
    close(ends[1]);
    pollfd wait { ends[0], POLLIN, 0 };
    constexpr int startTimeMilliseconds = 15000;
    std::array<char, 256> answer {};
    if (poll(&wait, 1, startTimeMilliseconds) > 0) {
        auto const bytes = read(ends[0], answer.data(), answer.size());
        m_address.assign(answer.data(), bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
        m_address = m_address.substr(0, m_address.find('\n'));
    }
    close(ends[0]);
    EXPECT_FALSE(m_address.empty()) << "no message bus could be started";
    setenv("DBUS_SESSION_BUS_ADDRESS", m_address.c_str(), 1);
}

void SessionBus::end() { m_daemon.end(SIGKILL); }

} // namespace paneweld_tests
