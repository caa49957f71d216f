#pragma once

#include "tests/linux/Toolkit.h"
#include "tests/managers/Session.h"

namespace paneweld_tests {

// Somebody else's ordinary window on the same screen, in the way of a panel at its first place.
class OtherProgram {
public:
    OtherProgram(Session const& session, Client& user);

    xcb_window_t window() const { return m_window; }
    // Shows it where it covers the panel's middle.
    void open();
    // The same place again, which a new window manager may not know.
    void takePlace();
    void close();
    // As the user's dock does it: in front of what is as high, and active. False when nothing of it happens.
    bool bringForward(xcb_window_t window);
    bool bringForward() { return bringForward(m_window); }
    // The user types into it, and it says so to the window manager (EWMH, _NET_WM_USER_TIME). False when the key did
    // not come.
    bool typeInto();
    // The same, but the user brings it forward first, and again when the keys go elsewhere: a panel that has just come
    // forward may do so a second time.
    bool insistOnTyping();
    // Which of the two is seen where both are.
    bool isBelow(xcb_window_t panel);

private:
    void strikeLetter();
    bool hearsKey();

    bool m_hasPixels;
    Client& m_user;
    Toolkit m_toolkit;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

} // namespace paneweld_tests
