#pragma once

#include "backends/linux/x11/Connection.h"
#include "platform/appkit/NSEventModifierFlags.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace backends {

// Which key of this keyboard lies where, by the names that X gives to positions ("ESC", "AC01"). They do not change
// with the layout, as virtual key codes do not.
class X11Keyboard {
public:
    explicit X11Keyboard(Connection& connection);

    // Asks; the answers come with the next replies. didChange is called after each of them.
    void start(std::function<void()> didChange);
    void handle(xcb_generic_event_t const& event);

    // Absent for a key that this keyboard has not.
    std::optional<xcb_keycode_t> keycode(std::uint16_t virtualKeyCode) const;
    std::optional<std::uint16_t> virtualKeyCode(xcb_keycode_t keycode) const;

    // NSEventModifierFlags of a key event's state.
    static platform::NSEventModifierFlags modifierFlags(std::uint16_t state);

private:
    void readNames();

    Connection& m_connection;
    std::function<void()> m_didChange;
    std::map<std::string, xcb_keycode_t> m_keycodes;
};

} // namespace backends
