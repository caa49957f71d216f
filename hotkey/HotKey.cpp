#include "hotkey/HotKey.h"

#include "hotkey/HotKeysController.h"

#include <utility>

namespace hotkey {

HotKey::HotKey(platform::Platform& platform, KeyCombo keyCombo, Handler keyDownHandler, Handler keyUpHandler)
    : m_platform(platform)
    , m_keyCombo(keyCombo)
    , m_keyDownHandler(std::move(keyDownHandler))
    , m_keyUpHandler(std::move(keyUpHandler))
{
}

std::shared_ptr<HotKey> HotKey::create(
    platform::Platform& platform, KeyCombo keyCombo, Handler keyDownHandler, Handler keyUpHandler)
{
    auto hotKey
        = std::shared_ptr<HotKey>(new HotKey(platform, keyCombo, std::move(keyDownHandler), std::move(keyUpHandler)));
    HotKeysController::register_(*hotKey);
    return hotKey;
}

std::shared_ptr<HotKey> HotKey::create(platform::Platform& platform, std::uint32_t carbonKeyCode,
    std::uint32_t carbonModifiers, Handler keyDownHandler, Handler keyUpHandler)
{
    return create(
        platform, KeyCombo(carbonKeyCode, carbonModifiers), std::move(keyDownHandler), std::move(keyUpHandler));
}

std::shared_ptr<HotKey> HotKey::create(platform::Platform& platform, Key key, platform::NSEventModifierFlags modifiers,
    Handler keyDownHandler, Handler keyUpHandler)
{
    return create(platform, KeyCombo(key, modifiers), std::move(keyDownHandler), std::move(keyUpHandler));
}

// The handlers go after this, as members do: what they hold may see the hot key unregistered already.
HotKey::~HotKey() { HotKeysController::unregister(*this); }

void HotKey::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    if (isPaused)
        HotKeysController::unregister(*this);
    else
        HotKeysController::register_(*this);
}

} // namespace hotkey
