#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "platform/carbon/HotKeyTruth.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace backends {

class X11Keyboard;

// Key combinations grabbed on the root window, so that they come here whatever window has the keyboard: each for
// exactly its modifiers, with the locks on or off. The grabs follow the keyboard as it changes. The server lets them go
// when this process ends, however it ends. Main thread only.
class X11HotKeys {
public:
    // The caller's name for one combination.
    using Handle = std::uint32_t;
    struct Observer {
        // Down once and up once, however long the key is held.
        std::function<void(Handle, bool isDown)> didPress;
        std::function<void()> resultDidChange;
    };

    X11HotKeys(Connection& connection, X11Keyboard& keyboard, EventLoop& loop);
    void setObserver(Observer observer) { m_observer = std::move(observer); }

    // The modifiers are those of platform/carbon/EventHotKeys.h. The server's answer comes one round trip later.
    void add(Handle handle, std::uint32_t virtualKeyCode, std::uint32_t modifiers);
    void remove(Handle handle);
    // None for a handle that is not there.
    platform::HotKeyResult result(Handle handle) const;

    // Looks again at what is not as it should be: the keyboard is another one, or somebody may have let a key go.
    void keyboardDidChange();
    void tryAgain();
    // The same, when a program may have ended: soon, and once for many.
    void somebodyMayHaveGone();
    void connectionWasLost();

    // True when the event was one of a hot key.
    bool handle(xcb_generic_event_t const& event);

private:
    struct Grab {
        xcb_keycode_t key = 0;
        std::uint8_t modifiers = 0;
        std::uint8_t locks = 0;
        bool operator==(Grab const&) const = default;
        bool conflictsWith(Grab const& other) const { return key == other.key && modifiers == other.modifiers; }
        bool matches(xcb_keycode_t pressed, std::uint16_t state) const;
    };
    struct Entry {
        std::uint32_t virtualKeyCode = 0;
        std::uint32_t modifiers = 0;
        platform::HotKeyResult result = platform::HotKeyResult::Pending;
        std::optional<Grab> grab {};
        // Tells the answer to the latest attempt from those to earlier ones.
        std::uint32_t attempt = 0;
        bool isRefusalLogged = false;
    };
    struct Held {
        // Absent when it was let go of while the key is still down: the rest of the key's events is nobody's.
        std::optional<Handle> handle {};
        xcb_keycode_t key = 0;
        // Of a release that may be half of a repetition.
        std::optional<xcb_timestamp_t> releasedAt {};
    };

    void reportPress(Handle handle, bool isDown);
    void reportResult();
    void place(Handle handle, Entry& entry);
    void letGo(Entry& entry);
    // What to grab, or why it cannot be.
    std::optional<Grab> wantedGrab(Entry const& entry, platform::HotKeyResult& reason) const;
    bool isHeldByAnotherEntry(Grab const& grab) const;
    void answered(Handle handle, std::uint32_t attempt, bool isRefused);
    bool handlePress(xcb_key_press_event_t const& event);
    bool handleRelease(xcb_key_release_event_t const& event);
    void finishRelease(xcb_timestamp_t time);
    void placeMissing();
    void retryLater();
    template<typename Visit>
    static void forEachLockState(Grab const& grab, Visit visit);

    Connection& m_connection;
    X11Keyboard& m_keyboard;
    EventLoop& m_loop;
    Observer m_observer;
    std::map<Handle, Entry> m_entries;
    // The combination that is down. The keyboard is grabbed meanwhile, so that there is one at most.
    std::optional<Held> m_held;
    std::uint32_t m_attempts = 0;
    LoopSource m_retry;
    std::size_t m_retries = 0;
    bool m_isRetrying = false;
};

} // namespace backends
