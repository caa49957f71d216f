#pragma once

#include "tests/linux/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <string>

namespace paneweld_tests {

// A message bus of a test's own. While it is there, DBUS_SESSION_BUS_ADDRESS names it. It starts no services by itself,
// unless a test wants those that are installed.
class SessionBus {
public:
    enum class Services { None, Installed };
    explicit SessionBus(Services services = Services::None);

    std::string const& address() const { return m_address; }
    // The file that is its socket.
    std::string socket() const { return m_folder.path() + "/bus"; }
    // As if it had crashed.
    void end();
    // Another one at the same place, with an identity of its own. Returns when it takes connections.
    void startAgain();
    // A bus that reads and says nothing, until it goes on.
    void pause();
    void resume();

private:
    platform::TemporaryFolder m_folder;
    std::string m_configuration;
    ChildProcess m_daemon;
    std::string m_address;
};

} // namespace paneweld_tests
