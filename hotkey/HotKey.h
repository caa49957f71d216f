#pragma once

#include "hotkey/KeyCombo.h"
#include "platform/foundation/UUID.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {
class Platform;
} // namespace platform

namespace hotkey {

// A key combination that fires whatever application is in front, for as long as the object lives and is not paused.
// Whether the system grants it is not told: a refused one never fires, in silence.
//
// All hot keys of a process are in one table, and its numbers are the only thing by which the system's events find
// back. The plug-in has that table. A host that links the static library beside the plug-in has a second one, which
// would number its hot keys alike: such a host uses keys and combinations, and makes no HotKey.
//
// Main thread only, destruction included.
class HotKey : public std::enable_shared_from_this<HotKey> {
public:
    // Called on the main thread, inside the event's dispatch. It may pause or drop the hot key that calls it.
    using Handler = std::function<void()>;

    // Registered when this returns.
    static std::shared_ptr<HotKey> create(
        platform::Platform& platform, KeyCombo keyCombo, Handler keyDownHandler = {}, Handler keyUpHandler = {});
    static std::shared_ptr<HotKey> create(platform::Platform& platform, std::uint32_t carbonKeyCode,
        std::uint32_t carbonModifiers, Handler keyDownHandler = {}, Handler keyUpHandler = {});
    static std::shared_ptr<HotKey> create(platform::Platform& platform, Key key,
        platform::NSEventModifierFlags modifiers, Handler keyDownHandler = {}, Handler keyUpHandler = {});
    ~HotKey();
    HotKey(HotKey const&) = delete;
    HotKey& operator=(HotKey const&) = delete;

    platform::UUID const& identifier() const { return m_identifier; }
    KeyCombo const& keyCombo() const { return m_keyCombo; }
    bool isPaused() const { return m_isPaused; }

    // Empty for none.
    Handler const& keyDownHandler() const { return m_keyDownHandler; }
    Handler const& keyUpHandler() const { return m_keyUpHandler; }
    void setKeyDownHandler(Handler handler) { m_keyDownHandler = std::move(handler); }
    void setKeyUpHandler(Handler handler) { m_keyUpHandler = std::move(handler); }

    // A paused hot key is not registered: the combination is free for others. Going on registers it anew, as if it had
    // just been made; the handlers stay.
    void setPaused(bool isPaused);

private:
    friend class HotKeysController;
    HotKey(platform::Platform& platform, KeyCombo keyCombo, Handler keyDownHandler, Handler keyUpHandler);

    platform::Platform& m_platform;
    platform::UUID m_identifier = platform::UUID::random();
    KeyCombo m_keyCombo;
    Handler m_keyDownHandler;
    Handler m_keyUpHandler;
    bool m_isPaused = false;
};

} // namespace hotkey
