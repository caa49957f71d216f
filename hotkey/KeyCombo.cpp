#include "hotkey/KeyCombo.h"

#include "hotkey/NSEventModifierFlags+HotKey.h"
#include "platform/foundation/Fatal.h"

namespace hotkey {

using platform::Dictionary;
using platform::NSEventModifierFlags;
using platform::Value;

namespace {

constexpr char const* keyCodeKey = "keyCode";
constexpr char const* modifiersKey = "modifiers";

// Null when there is no integer under the key.
Value const* integer(Dictionary const& dictionary, char const* key)
{
    auto const found = dictionary.find(key);
    if (found == dictionary.end() || !(found->second.asInt() || found->second.asUInt64()))
        return nullptr;
    return &found->second;
}

std::uint32_t unsigned32(Value const& value, char const* key)
{
    auto const number = value.asUInt32();
    if (!number)
        platform::fatalError(std::string("KeyCombo: ") + key + " does not fit 32 bits: " + value.description());
    return *number;
}

} // namespace

KeyCombo::KeyCombo(std::uint32_t keyCode, std::uint32_t modifierBits)
    : carbonKeyCode(keyCode)
    , carbonModifiers(modifierBits)
{
}

KeyCombo::KeyCombo(Key key, NSEventModifierFlags modifiers)
    : KeyCombo(key.carbonKeyCode(), carbon(modifiers))
{
}

std::optional<Key> KeyCombo::key() const { return Key::fromCarbonKeyCode(carbonKeyCode); }

void KeyCombo::setKey(std::optional<Key> key) { carbonKeyCode = key ? key->carbonKeyCode() : 0; }

NSEventModifierFlags KeyCombo::modifiers() const { return modifierFlags(carbonModifiers); }

void KeyCombo::setModifiers(NSEventModifierFlags modifiers) { carbonModifiers = carbon(modifiers); }

Dictionary KeyCombo::dictionary() const
{
    return { { keyCodeKey, std::int64_t { carbonKeyCode } }, { modifiersKey, std::int64_t { carbonModifiers } } };
}

std::optional<KeyCombo> KeyCombo::fromDictionary(Dictionary const& dictionary)
{
    auto const* const keyCode = integer(dictionary, keyCodeKey);
    auto const* const modifiers = integer(dictionary, modifiersKey);
    if (!keyCode || !modifiers)
        return std::nullopt;
    return KeyCombo(unsigned32(*keyCode, keyCodeKey), unsigned32(*modifiers, modifiersKey));
}

std::string KeyCombo::description() const
{
    auto text = hotkey::description(modifiers());
    if (auto const known = key())
        text += known->description();
    return text;
}

std::optional<std::string> KeyCombo::carbonKeyCodeToString(std::uint32_t) { return std::nullopt; }

} // namespace hotkey
