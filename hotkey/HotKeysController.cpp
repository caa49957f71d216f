#include "hotkey/HotKeysController.h"

#include "hotkey/HotKey.h"
#include "platform/Platform.h"
#include "platform/foundation/Fatal.h"
#include "platform/foundation/MainThread.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace hotkey {

using platform::CarbonEvent;
using platform::eventNotHandledErr;
using platform::noErr;
using platform::OSStatus;

namespace {

struct State {
    std::map<std::uint32_t, HotKeyBox> boxesByNumber {};
    std::uint32_t registrationCount = 0;
    platform::EventTarget::HandlerRef eventHandlerRef {};
};

// Never destroyed: a hot key that lives to the end of the process still unregisters itself.
State& state()
{
    static auto& state = *new State;
    return state;
}

auto boxOf(HotKey const& hotKey)
{
    auto& boxes = state().boxesByNumber;
    return std::find_if(boxes.begin(), boxes.end(),
        [&](auto const& numbered) { return numbered.second.identifier == hotKey.identifier(); });
}

} // namespace

std::map<std::uint32_t, HotKeyBox> const& HotKeysController::boxesByNumber() { return state().boxesByNumber; }

std::uint32_t HotKeysController::registrationCount() { return state().registrationCount; }

std::uint32_t HotKeysController::numberAfter(std::uint32_t registrationCount)
{
    if (registrationCount == std::numeric_limits<std::uint32_t>::max())
        platform::fatalError("HotKeysController: no number is left for another hot key");
    return registrationCount + 1;
}

void HotKeysController::register_(HotKey& hotKey)
{
    platform::assertMainThread("HotKeysController.register");
    if (boxOf(hotKey) != state().boxesByNumber.end())
        return;
    auto const number = numberAfter(state().registrationCount);
    state().registrationCount = number;
    auto& box = state().boxesByNumber[number];
    box = { hotKey.identifier(), hotKey.weak_from_this(), number };

    // A refusal is kept silent, and so is a world without the service: the box stays, and nothing ever fires.
    auto* const service = hotKey.m_platform.eventHotKeys();
    if (!service)
        return;
    auto registered = service->registerEventHotKey(
        hotKey.keyCombo().carbonKeyCode, hotKey.keyCombo().carbonModifiers, { hotKeySignature, number });
    if (registered.status != noErr || !registered.reference)
        return;
    box.carbonEventHotKey = std::move(registered.reference);
    if (state().eventHandlerRef)
        return;
    state().eventHandlerRef = service->eventDispatcherTarget().installEventHandler(
        { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed },
            { platform::kEventClassKeyboard, platform::kEventHotKeyReleased } },
        &HotKeysController::handle);
}

void HotKeysController::unregister(HotKey const& hotKey)
{
    platform::assertMainThread("HotKeysController.unregister");
    auto const found = boxOf(hotKey);
    if (found == state().boxesByNumber.end())
        return;
    auto& box = found->second;
    box.carbonEventHotKey.reset();
    box.hotKey.reset();
    state().boxesByNumber.erase(box.carbonHotKeyID);
}

OSStatus HotKeysController::handle(CarbonEvent const* event)
{
    if (!event)
        return eventNotHandledErr;
    platform::EventHotKeyID id;
    auto const status = event->getParameter(platform::kEventParamDirectObject, platform::typeEventHotKeyID, id);
    if (status != noErr)
        return status;
    if (id.signature != hotKeySignature)
        return eventNotHandledErr;

    auto const found = state().boxesByNumber.find(id.id);
    // Held to the end of the call: the handler may drop the last reference.
    auto const hotKey = found == state().boxesByNumber.end() ? nullptr : found->second.hotKey.lock();
    if (!hotKey)
        return eventNotHandledErr;

    // A copy: the handler may replace itself while it runs.
    HotKey::Handler handler;
    if (event->kind() == platform::kEventHotKeyReleased)
        handler = hotKey->keyUpHandler();
    else if (event->kind() == platform::kEventHotKeyPressed)
        handler = hotKey->keyDownHandler();
    // Paused and yet in the table: an event that arrives while the system is told to let go.
    if (hotKey->isPaused() || !handler)
        return eventNotHandledErr;
    handler();
    return noErr;
}

} // namespace hotkey
