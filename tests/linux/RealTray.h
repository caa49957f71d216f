#pragma once

#include "tests/linux/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// A tray that people have, on a test's screen, with settings that give it nothing but the tray.
class RealTray {
public:
    enum class Program { Trayer, Tint2, XfcePanel };

    // Sets HOME and the folders below it for this process too: what a bus starts for the tray reads them there. So it
    // comes before the bus.
    explicit RealTray(Program program);

    // Returns when it takes icons.
    void start(std::string const& display);
    // All at once, as when it crashes.
    void kill();

private:
    std::vector<std::string> command() const;
    void writeSettings() const;

    Program m_program;
    platform::TemporaryFolder m_home;
    ChildProcess m_process;
};

// Keeps a picture of the screen beside the build, for people to look at: NAME.png in the folder "artefacts".
void keepPicture(std::string const& display, std::string const& name);

} // namespace paneweld_tests
