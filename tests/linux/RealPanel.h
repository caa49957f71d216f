#pragma once

#include "tests/linux/ChildProcess.h"
#include "tests/linux/Client.h"
#include "tests/support/TemporaryFolder.h"

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace paneweld_tests {

// A panel or tray that people have, as their desktop installs it, with nothing on it but the place for status items. It
// has a home of its own, which the environment names from its construction on: make it before the session bus, whose
// services live there too, and start it when bus and X server are there.
class RealPanel {
public:
    struct Program {
        // A word for test names and pictures.
        std::string name;
        std::vector<std::string> command;
        // Files below the home.
        std::vector<std::pair<std::string, std::string>> files;
        // For messages.
        friend void PrintTo(Program const& program, std::ostream* stream) { *stream << program.name; }
    };
    explicit RealPanel(Program program);

    // Shows items of the session bus, and windows as well.
    static Program xfce();
    // Shows items of the session bus.
    static Program lxqt();
    // Show windows.
    static Program trayer();
    static Program tint2();

    std::string const& name() const { return m_program.name; }
    void start();
    // The same for one that shows windows: returns when it takes them.
    void startAsTray(std::string const& display);
    // As if it had crashed.
    void end();

    // What on the screen has the colour that a test gives its icon. Absent while it is not seen.
    static std::optional<Geometry> iconOf(Client& client, std::uint32_t colour);
    static void click(Client& client, Geometry const& place, int button);
    // Windows of a menu's size that lie over the others without a frame.
    static std::vector<xcb_window_t> popups(Client& client);

private:
    Program m_program;
    platform::TemporaryFolder m_home;
    ChildProcess m_process;
};

} // namespace paneweld_tests
