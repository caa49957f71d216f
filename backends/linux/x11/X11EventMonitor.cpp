#include "backends/linux/x11/X11EventMonitor.h"

#include "backends/linux/x11/X11Keyboard.h"
#include "backends/linux/x11/X11Window.h"

#include <utility>

namespace backends {

using platform::EventType;
using platform::NSEvent;

X11EventMonitor::X11EventMonitor(Connection& connection, X11Keyboard& keyboard)
    : m_connection(connection)
    , m_keyboard(keyboard)
{
}

void X11EventMonitor::interestDidChange()
{
    auto const wanted = wantedGrabs();
    auto const before = std::exchange(m_grabbed, wanted);
    for (auto const& [window, unused] : m_windows) {
        for (auto const& [key, kind] : before) {
            if (!wanted.contains(key))
                ungrab(window, key);
        }
        for (auto const& [key, kind] : wanted) {
            auto const old = before.find(key);
            if (old == before.end() || old->second != kind)
                grab(window, key, kind);
        }
    }
}

std::map<xcb_keycode_t, X11EventMonitor::Grab> X11EventMonitor::wantedGrabs()
{
    std::map<xcb_keycode_t, Grab> wanted;
    auto const alwaysConsumed = keyCodesAlwaysConsumed();
    for (auto const code : keyCodesOfInterest()) {
        bool const isFree = alwaysConsumed.contains(code);
        // What could not be given back is not taken.
        if (isFree && m_isComposing)
            continue;
        if (auto const key = m_keyboard.map()->keycode(code))
            wanted.emplace(*key, isFree ? Grab::Free : Grab::Frozen);
    }
    return wanted;
}

void X11EventMonitor::setComposingText(bool isComposing)
{
    if (std::exchange(m_isComposing, isComposing) != isComposing)
        interestDidChange();
}

void X11EventMonitor::keyboardDidChange() { interestDidChange(); }

void X11EventMonitor::windowDidShow(std::shared_ptr<X11Window> const& window)
{
    if (!m_windows.emplace(window->xid(), window).second)
        return;
    for (auto const& [key, kind] : m_grabbed)
        grab(window->xid(), key, kind);
}

void X11EventMonitor::grab(xcb_window_t window, xcb_keycode_t key, Grab kind)
{
    // Any modifier, so that locks do not matter; whoever watches decides by the event's flags.
    xcb_grab_key(m_connection.wire(), 0, window, XCB_MOD_MASK_ANY, key, XCB_GRAB_MODE_ASYNC,
        kind == Grab::Frozen ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC);
}

void X11EventMonitor::ungrab(xcb_window_t window, xcb_keycode_t key)
{
    xcb_ungrab_key(m_connection.wire(), key, window, XCB_MOD_MASK_ANY);
}

void X11EventMonitor::allow(std::uint8_t mode, xcb_timestamp_t time)
{
    xcb_allow_events(m_connection.wire(), mode, time);
}

void X11EventMonitor::handle(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return;
    auto const& key = reinterpret_cast<xcb_key_press_event_t const&>(event);
    // What a window of our own connection gets, as an open menu does, is read there. Its grab has ended ours.
    if (m_connection.clientBase(key.event) == m_connection.ownBase()) {
        m_swallowed.reset();
        return;
    }
    if (type == XCB_KEY_PRESS)
        handlePress(key);
    else
        handleRelease(key);
}

void X11EventMonitor::handlePress(xcb_key_press_event_t const& event)
{
    m_connection.noteUserTime(event.time);
    if (m_swallowed == event.detail) {
        // A repetition of the consumed press.
        allow(XCB_ALLOW_SYNC_KEYBOARD, event.time);
        return;
    }
    // Another key ends the swallowing: it goes where it belongs, and the grab goes with it. So does what came to the
    // grab after the swallowed key had been let go.
    bool const isToGrab = event.event == m_connection.root();
    m_swallowed.reset();
    if (!isToGrab && isConsumed(event))
        swallowUntilRelease(event);
    else
        allow(XCB_ALLOW_REPLAY_KEYBOARD, event.time);
}

void X11EventMonitor::handleRelease(xcb_key_release_event_t const& event)
{
    if (m_swallowed && m_swallowed != event.detail) {
        // A key that was down before belongs to whoever saw its press.
        m_swallowed.reset();
        allow(XCB_ALLOW_REPLAY_KEYBOARD, event.time);
        return;
    }
    m_swallowed.reset();
    // Let go before the keyboard was grabbed: what the server has kept since then belongs to others.
    if (event.event != m_connection.root())
        allow(XCB_ALLOW_REPLAY_KEYBOARD, event.time);
    xcb_ungrab_keyboard(m_connection.wire(), event.time);
    allow(XCB_ALLOW_ASYNC_KEYBOARD, event.time);
}

bool X11EventMonitor::isConsumed(xcb_key_press_event_t const& event)
{
    auto const code = m_keyboard.map()->virtualKeyCode(event.detail);
    if (m_isComposing || !code || !m_grabbed.contains(event.detail))
        return false;
    NSEvent key;
    key.type = EventType::KeyDown;
    key.keyCode = *code;
    key.modifierFlags = m_keyboard.modifierFlags(event.state);
    if (auto const found = m_windows.find(event.event); found != m_windows.end())
        key.window = std::weak_ptr<platform::NSWindow>(found->second.lock());
    return !deliver(key).has_value();
}

void X11EventMonitor::swallowUntilRelease(xcb_key_press_event_t const& event)
{
    m_swallowed = event.detail;
    // The window may go with this very key, and its grab with it; the repetitions and the release must not reach
    // whatever window comes next. The server keeps each further key until it is decided, so that none is lost.
    auto const cookie = xcb_grab_keyboard(
        m_connection.wire(), 0, m_connection.root(), event.time, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC);
    allow(XCB_ALLOW_SYNC_KEYBOARD, event.time);
    m_connection.ask<xcb_grab_keyboard_reply_t>(cookie.sequence, [this, time = event.time](auto const* reply) {
        // Somebody else has the keyboard. Then nothing is kept either.
        if (!reply || reply->status != XCB_GRAB_STATUS_SUCCESS)
            allow(XCB_ALLOW_ASYNC_KEYBOARD, time);
    });
}

} // namespace backends
