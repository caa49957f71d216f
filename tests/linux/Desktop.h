#pragma once

#include "tests/linux/ChildProcess.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// An X server of a test's own, with a window manager and a compositor where the test wants them.
class Desktop {
public:
    explicit Desktop(std::string const& screen = "1280x800x24", std::vector<std::string> const& serverArguments = {});
    ~Desktop();

    // As in DISPLAY.
    std::string const& display() const { return m_display; }

    // Return when the program has taken its place on the screen.
    void startWindowManager(std::vector<std::string> const& command = { "openbox" });
    void startCompositor();
    // For a window manager that composites by itself.
    void awaitCompositor();
    // Return when it has gone.
    void endWindowManager();
    // It hears nothing more, and then is gone without a word.
    void pauseWindowManager();
    void killWindowManager();
    void endCompositor();
    void endServer();
    // A server that is there and answers nothing, until it goes on.
    void pauseServer();
    void resumeServer();

private:
    ChildProcess m_server;
    ChildProcess m_windowManager;
    ChildProcess m_compositor;
    std::string m_display;
};

} // namespace paneweld_tests
