#include "tests/linux/SessionBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace paneweld_tests {

namespace {

constexpr auto configuration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=SOCKET</listen>
  <auth>EXTERNAL</auth>
  SERVICES
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

SessionBus::SessionBus(Services services)
{
    std::string text = configuration;
    auto const fill = [&](std::string_view place, std::string const& filling) {
        text.replace(text.find(place), place.size(), filling);
    };
    fill("SERVICES", services == Services::Installed ? "<standard_session_servicedirs/>" : "");
    fill("SOCKET", socket());
    m_configuration = m_folder.write("bus.conf", text);
    startAgain();
}

void SessionBus::startAgain()
{
    std::array<int, 2> ends {};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    m_daemon = ChildProcess({ "dbus-daemon", "--config-file=" + m_configuration, "--nofork", "--nopidfile",
                                "--nosyslog", "--print-address=" + std::to_string(ends[1]) },
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

void SessionBus::pause() { kill(m_daemon.id(), SIGSTOP); }

void SessionBus::resume() { kill(m_daemon.id(), SIGCONT); }

} // namespace paneweld_tests
