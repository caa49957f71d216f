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
    void end();

private:
    platform::TemporaryFolder m_folder;
    ChildProcess m_daemon;
    std::string m_address;
};

} // namespace paneweld_tests
