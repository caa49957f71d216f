#pragma once

#include "tests/linux/ChildProcess.h"

#include <string>

namespace paneweld_tests {

// A message bus of a test's own. While it is there, DBUS_SESSION_BUS_ADDRESS names it.
class SessionBus {
public:
    SessionBus();

    std::string const& address() const { return m_address; }
    void end();

private:
    ChildProcess m_daemon;
    std::string m_address;
};

} // namespace paneweld_tests
