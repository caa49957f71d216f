#pragma once

#include "tests/linux/ChildProcess.h"
#include "tests/linux/Client.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// A program of a real toolkit with a window that files can be dragged from, and the hand that drags them: a pointer
// that nobody can tell from a person's.
class DragProgram {
public:
    enum class Kind { Gtk, Qt };

    // The user's connection has to outlive it. How often each of the files is dragged, and which they are.
    DragProgram(Client& user, Kind kind, int times, std::vector<std::string> const& paths);

    // Whether its window has come to its place, at the left of the screen. To be asked until it has.
    bool isReady();
    void press();
    // One more move of the pointer. Programs see a drag in several moves: a few near the place of the press, then some
    // over the target.
    void moveTowards(Geometry const& target);
    void release() { m_user.button(1, false); }

private:
    Client& m_user;
    ChildProcess m_program;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    Geometry m_pressed;
    int m_moves = 0;
};

} // namespace paneweld_tests
