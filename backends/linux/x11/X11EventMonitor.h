#pragma once

#include "backends/linux/x11/Connection.h"
#include "platform/appkit/NSEventMonitors.h"

#include <map>
#include <memory>
#include <optional>

namespace backends {

class X11Keyboard;
class X11Window;

// Sees keys of interest before the host's toolkit does: while somebody watches them they are grabbed on the process's
// own windows. A key that nobody gives on comes here alone, at once. For another the server keeps the keyboard until it
// is decided, and what is given on is replayed as if nobody had been there. Nothing is grabbed while nobody watches,
// and never a key of another process.
//
// A host that is busy decides late, so the second way is not for keys of the plug-in's own: the user could type nowhere
// meanwhile. And when a window goes under the pointer while the server keeps keys that were grabbed on it, the server
// (X.Org 21.1) loses track of the window below the pointer and crashes later.
class X11EventMonitor : public platform::NSEventMonitors {
public:
    X11EventMonitor(Connection& connection, X11Keyboard& keyboard);

    void windowDidShow(std::shared_ptr<X11Window> const& window);
    void windowDidGo(xcb_window_t window) { m_windows.erase(window); }
    void keyboardDidChange();
    // An input method has unfinished text: the keys are its.
    void setComposingText(bool isComposing);

    void handle(xcb_generic_event_t const& event);
    // While a consumed key is held the server keeps every other key until it is decided here.
    bool holdsKeyboard() const { return m_swallowed.has_value(); }

protected:
    void interestDidChange() override;

private:
    // Whether the server keeps the keyboard from the press of a key until it is decided.
    enum class Grab { Frozen, Free };

    std::map<xcb_keycode_t, Grab> wantedGrabs();
    void handlePress(xcb_key_press_event_t const& event);
    void handleRelease(xcb_key_release_event_t const& event);
    bool isConsumed(xcb_key_press_event_t const& event);
    void swallowUntilRelease(xcb_key_press_event_t const& event);
    void allow(std::uint8_t mode, xcb_timestamp_t time);
    void grab(xcb_window_t window, xcb_keycode_t key, Grab kind);
    void ungrab(xcb_window_t window, xcb_keycode_t key);

    Connection& m_connection;
    X11Keyboard& m_keyboard;
    std::map<xcb_window_t, std::weak_ptr<X11Window>> m_windows;
    std::map<xcb_keycode_t, Grab> m_grabbed;
    // The consumed key that is still held.
    std::optional<xcb_keycode_t> m_swallowed;
    bool m_isComposing = false;
};

} // namespace backends
