#pragma once

#include <string>
#include <sys/types.h>

namespace paneweld_tests {

// A tray that belongs to another process, of a name that the test chooses.
class ForkedTray {
public:
    // Returns when the tray is there.
    ForkedTray(std::string const& display, std::string const& processName);
    ~ForkedTray();
    ForkedTray(ForkedTray const&) = delete;
    ForkedTray& operator=(ForkedTray const&) = delete;

private:
    pid_t m_process;
};

} // namespace paneweld_tests
