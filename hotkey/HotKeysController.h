#pragma once

#include "hotkey/HotKeyBox.h"
#include "platform/carbon/CarbonEvent.h"

#include <cstdint>
#include <map>

namespace hotkey {

class HotKey;

// The process-wide table between the numbers that the system knows hot keys by and the hot keys that live. Nobody but
// HotKey needs it; it is public so that its promises can be tested. Main thread only: there is no lock.
class HotKeysController {
public:
    HotKeysController() = delete;

    // Whose hot keys these are, in the system's events.
    static constexpr std::uint32_t hotKeySignature = platform::fourCharacterCode("KbHk");

    // Gives the hot key the next number and asks the system for its combination. Nothing when it is registered already.
    static void register_(HotKey& hotKey);
    // Nothing when it is not registered. Also for a hot key that is being destroyed.
    static void unregister(HotKey const& hotKey);

    // What the installed event handler does: calls the hot key that the event names and gives noErr, or gives
    // eventNotHandledErr so that the event travels on. A parameter that cannot be read gives its own status.
    static platform::OSStatus handle(platform::CarbonEvent const* event);

    static std::map<std::uint32_t, HotKeyBox> const& boxesByNumber();
    // Registrations ever made. A number is never used again.
    static std::uint32_t registrationCount();
    // The number of the registration after so many. Fatal when there is none left.
    static std::uint32_t numberAfter(std::uint32_t registrationCount);
};

} // namespace hotkey
