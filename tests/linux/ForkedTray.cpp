#include "tests/linux/ForkedTray.h"

#include "tests/linux/TrayStandIn.h"

#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

ForkedTray::ForkedTray(std::string const& display, std::string const& processName)
    : m_process(fork())
{
    if (m_process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        prctl(PR_SET_NAME, processName.c_str());
        TrayStandIn tray(display);
        while (xcb_connection_has_error(tray.wire()) == 0) {
            tray.handleEvents();
            pollfd wait { tray.descriptor(), POLLIN, 0 };
            poll(&wait, 1, -1);
        }
        _exit(0);
    }
    Client client(display);
    EXPECT_TRUE(client.waitUntil([&] { return client.selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_WINDOW_NONE; }));
}

ForkedTray::~ForkedTray()
{
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

} // namespace paneweld_tests
