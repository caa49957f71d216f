#pragma once

#include "tests/linux/Client.h"
#include "tests/linux/PanelStandIn.h"
#include "tests/linux/StatusWatcherStandIn.h"

#include <memory>
#include <string>

namespace paneweld_tests {

// Where the one status item of a session is: on a list on the bus, or in the tray that some window managers bring.
class DesktopPanel {
public:
    DesktopPanel(std::string const& busAddress, Client& user);

    // False when none comes.
    bool awaitItem();
    // With the left button.
    void click();

private:
    std::string m_busAddress;
    Client& m_user;
    StatusWatcherStandIn m_watcher;
    std::unique_ptr<PanelStandIn> m_panel;
    xcb_window_t m_icon = XCB_WINDOW_NONE;
};

} // namespace paneweld_tests
