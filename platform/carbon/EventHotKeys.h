#pragma once

#include "platform/carbon/EventTarget.h"
#include "platform/carbon/HotKeyTruth.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace platform {

// The modifier bits of a hot key.
constexpr std::uint32_t cmdKey = 0x100;
constexpr std::uint32_t shiftKey = 0x200;
constexpr std::uint32_t optionKey = 0x800;
constexpr std::uint32_t controlKey = 0x1000;
constexpr std::uint32_t hotKeyModifierBits = cmdKey | shiftKey | optionKey | controlKey;

// A registration of the hot-key service. Dropping it ends the registration: UnregisterEventHotKey.
class EventHotKey {
public:
    virtual ~EventHotKey() = default;
};
using EventHotKeyRef = std::unique_ptr<EventHotKey>;

// The system's hot-key service: key combinations that reach this process whatever application is in front. A backend
// grabs them and reports what the user does. Main thread only.
class EventHotKeys {
public:
    virtual ~EventHotKeys() = default;

    struct Registered {
        OSStatus status = noErr;
        // Null unless the status is noErr.
        EventHotKeyRef reference {};
    };
    // RegisterEventHotKey. The key code is virtual: a position of the ANSI keyboard, whatever the layout writes on it.
    // Fails with eventHotKeyExistsErr for a combination that this process has registered already, and with paramErr
    // for modifiers other than the four. noErr says that the system was asked, not that it agreed.
    [[nodiscard]] virtual Registered registerEventHotKey(
        std::uint32_t keyCode, std::uint32_t modifiers, EventHotKeyID id)
        = 0;

    // What became of the registrations, beside what they say. The handler is called from the loop when the answer has
    // changed; an empty one takes it away.
    virtual HotKeyTruth truth() const = 0;
    void setTruthHandler(std::function<void()> handler) { m_truthHandler = std::move(handler); }

    // GetEventDispatcherTarget: where presses and releases of hot keys are sent.
    EventTarget& eventDispatcherTarget() { return m_dispatcherTarget; }

protected:
    // For backends: the combination went down, once however long it is held, and up again.
    void reportPressed(EventHotKeyID id);
    void reportReleased(EventHotKeyID id);
    // The truth is another one. Never from inside a registration, whose caller is not done yet.
    void reportTruthChanged();

private:
    EventTarget m_dispatcherTarget;
    std::function<void()> m_truthHandler;
};

} // namespace platform
