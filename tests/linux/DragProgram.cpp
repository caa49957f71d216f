#include "tests/linux/DragProgram.h"

#include <cstdint>
#include <cstdlib>

namespace paneweld_tests {

namespace {

constexpr std::uint32_t left = 50;
constexpr std::uint32_t top = 300;
// Toolkits call it a drag when the pointer has left the place of the press.
constexpr int movesNearby = 30;

std::vector<std::string> commandOf(DragProgram::Kind kind, int times, std::vector<std::string> const& paths)
{
    std::vector<std::string> command { PANEWELD_TEST_GTK_DRAG_SOURCE };
    // The interpreter that the system's own packages are for, whatever else is in the path.
    if (kind == DragProgram::Kind::Qt)
        command = { "/usr/bin/python3", PANEWELD_TEST_QT_DRAG_SOURCE };
    command.push_back(std::to_string(times));
    command.insert(command.end(), paths.begin(), paths.end());
    command.insert(command.begin(),
        { "env", "-u", "WAYLAND_DISPLAY", "GDK_BACKEND=x11", "QT_QPA_PLATFORM=xcb", "NO_AT_BRIDGE=1" });
    return command;
}

} // namespace

DragProgram::DragProgram(Client& user, Kind kind, int times, std::vector<std::string> const& paths)
    : m_user(user)
    , m_program(commandOf(kind, times, paths))
{
}

bool DragProgram::isReady()
{
    if (m_window == XCB_WINDOW_NONE) {
        for (auto const one : m_user.words(m_user.root(), "_NET_CLIENT_LIST").value_or(std::vector<std::uint32_t> {})) {
            if (m_user.text(one, "_NET_WM_NAME") == "drag source" && m_user.isViewable(one))
                m_window = one;
        }
        if (m_window == XCB_WINDOW_NONE)
            return false;
        // A window that a manager puts over another would get the drag.
        std::uint32_t const place[] = { left, top };
        xcb_configure_window(m_user.wire(), m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
    }
    auto const now = m_user.geometry(m_window);
    return now.x < 100 && now.y >= static_cast<int>(top);
}

void DragProgram::press()
{
    auto const window = m_user.geometry(m_window);
    m_pressed = { window.x + 60, window.y + 60, 0, 0 };
    m_user.movePointer(m_pressed.x, m_pressed.y);
    m_user.button(1, true);
    m_moves = 0;
}

void DragProgram::moveTowards(Geometry const& target)
{
    ++m_moves;
    if (m_moves < movesNearby)
        return m_user.movePointer(m_pressed.x + m_moves, m_pressed.y + m_moves);
    // About the middle, never twice at the same place.
    m_user.movePointer(target.x + target.width / 2 - 4 + m_moves % 8, target.y + target.height / 2);
}

} // namespace paneweld_tests
