#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/KeyboardMap.h"

#include <functional>
#include <memory>
#include <mutex>

namespace backends {

// The keyboard of the X server, kept up to date: layouts and modifiers that the user changes, and keyboards that are
// plugged in. Main thread only, but for map().
class X11Keyboard {
public:
    X11Keyboard(Connection& connection, platform::HotKeyModifierKeys const& modifierKeys);

    // Asks; the answers come with the next replies. didChange is called after each round of them that brought
    // something else.
    enum class DetectableRepeat { Wanted, Unwanted };
    void start(std::function<void()> didChange, DetectableRepeat detectableRepeat = DetectableRepeat::Wanted);
    void handle(xcb_generic_event_t const& event);

    // As it was described last; without any key until the first answer. Any thread.
    std::shared_ptr<KeyboardMap const> map() const;

    // Whether a held key repeats its press alone, so that each release is a real one. Not every server can.
    bool tellsRepetitions() const { return m_tellsRepetitions; }
    platform::HotKeyModifierKeys const& modifierKeys() const { return m_modifierKeys; }
    // What the state of a key event says of the four modifiers and of caps lock.
    platform::NSEventModifierFlags modifierFlags(std::uint16_t state) const;

private:
    void read();
    void readNames(std::shared_ptr<KeyboardMap> const& map);
    void readSymbols(std::shared_ptr<KeyboardMap> const& map);
    void readModifiers(std::shared_ptr<KeyboardMap> const& map);
    void publish(std::shared_ptr<KeyboardMap const> map);

    Connection& m_connection;
    platform::HotKeyModifierKeys m_modifierKeys;
    std::function<void()> m_didChange;
    std::mutex mutable m_mutex;
    std::shared_ptr<KeyboardMap const> m_map;
    bool m_tellsRepetitions = false;
    bool m_isReading = false;
    bool m_mustReadAgain = false;
};

} // namespace backends
