#pragma once

#include <cstdint>
#include <optional>

namespace platform {

// The platform's status codes, as far as they are needed: 0 is success.
using OSStatus = std::int32_t;
constexpr OSStatus noErr = 0;
constexpr OSStatus unimpErr = -4;
constexpr OSStatus paramErr = -50;
constexpr OSStatus eventParameterNotFoundErr = -9870;
constexpr OSStatus eventNotHandledErr = -9874;
constexpr OSStatus eventHotKeyExistsErr = -9878;

// Names of four characters, folded from the left into 32 bits.
constexpr std::uint32_t fourCharacterCode(char const (&text)[5])
{
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code * 256 + static_cast<std::uint8_t>(text[i]);
    return code;
}

constexpr std::uint32_t kEventClassKeyboard = fourCharacterCode("keyb");
constexpr std::uint32_t kEventHotKeyPressed = 5;
constexpr std::uint32_t kEventHotKeyReleased = 6;
constexpr std::uint32_t kEventParamDirectObject = fourCharacterCode("----");
constexpr std::uint32_t typeEventHotKeyID = fourCharacterCode("hkid");

// Whose hot key it is (a four-character signature), and which of theirs.
struct EventHotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;
    bool operator==(EventHotKeyID const&) const = default;
};

struct EventTypeSpec {
    std::uint32_t eventClass = 0;
    std::uint32_t eventKind = 0;
    bool operator==(EventTypeSpec const&) const = default;
};

// One event on its way through the handlers of a target.
class CarbonEvent {
public:
    explicit CarbonEvent(EventTypeSpec type, std::optional<EventHotKeyID> directObject = {})
        : m_type(type)
        , m_directObject(directObject)
    {
    }

    EventTypeSpec type() const { return m_type; }
    // GetEventKind.
    std::uint32_t kind() const { return m_type.eventKind; }
    // GetEventParameter, for the one parameter that a hot key's event has. Anything else is not found.
    OSStatus getParameter(std::uint32_t name, std::uint32_t type, EventHotKeyID& value) const
    {
        if (name != kEventParamDirectObject || type != typeEventHotKeyID || !m_directObject)
            return eventParameterNotFoundErr;
        value = *m_directObject;
        return noErr;
    }

private:
    EventTypeSpec m_type;
    std::optional<EventHotKeyID> m_directObject;
};

} // namespace platform
