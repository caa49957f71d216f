#pragma once

#include "tests/linux/Desktop.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace paneweld_tests {

// How a window manager is started for a test.
struct WindowManager {
    enum class Compositor {
        Own,
        Separate, // picom beside it
        None,
    };

    std::string name;
    std::vector<std::string> command;
    Compositor compositor = Compositor::None;
    // It brings its own X server, as a Wayland compositor does.
    bool hasOwnServer = false;
    // It draws something where no window is.
    bool paintsBackground = false;
};
inline void PrintTo(WindowManager const& manager, std::ostream* stream) { *stream << manager.name; }

// Those that are tested here: PANEWELD_TEST_MANAGERS, a list with commas, or those of every run.
std::vector<WindowManager> windowManagersUnderTest();

// What a user is logged in to: a screen with a window manager, a message bus and a home folder, for one test.
class Session {
public:
    explicit Session(WindowManager const& manager);
    ~Session();

    std::string const& display() const { return m_display; }
    std::string const& busAddress() const { return m_bus->address(); }
    // Below a Wayland compositor nobody can read the screen, and no click can be made up.
    bool hasPixels() const { return !m_manager.hasOwnServer; }
    // Return when it has gone, and when another one works.
    void endWindowManager();
    void startWindowManager();

private:
    void startServerOfManager();

    WindowManager m_manager;
    platform::TemporaryFolder m_home;
    std::unique_ptr<SessionBus> m_bus;
    std::unique_ptr<Desktop> m_desktop;
    ChildProcess m_managerWithServer;
    std::string m_display;
};

} // namespace paneweld_tests
