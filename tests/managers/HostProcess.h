#pragma once

#include "tests/linux/ChildProcess.h"

#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace paneweld_tests {

// An app of its own in a process of its own, with the plug-in as it is built. What it is told and what it says are
// lines (hosts/HostApp.h).
class HostProcess {
public:
    // One of the toolkits of hosts/.
    explicit HostProcess(std::string const& toolkit);
    ~HostProcess();

    void tell(std::string const& line) const;
    // What it has said so far, read without waiting.
    std::vector<std::string> const& lines();
    int count(std::string const& line);
    // The X window that it opened last under that id; none before it says so.
    xcb_window_t window(std::string const& id);
    // All that it said, for a message.
    std::string story();
    pid_t id() const { return m_program.id(); }
    bool isRunning() { return m_program.isRunning(); }

private:
    ChildProcess m_program;
    int m_toProgram = -1;
    int m_fromProgram = -1;
    std::string m_unfinished;
    std::vector<std::string> m_lines;
};

} // namespace paneweld_tests
