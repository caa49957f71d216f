#include "hotkey/KeyCombo.h"

#include "hotkey/NSEventModifierFlags+HotKey.h"
#include "platform/Platform.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSMenu.h"
#include "platform/carbon/EventHotKeys.h"
#include "platform/carbon/SymbolicHotKeys.h"
#include "platform/foundation/MainThread.h"

namespace hotkey {

using platform::cmdKey;
using platform::controlKey;
using platform::optionKey;
using platform::shiftKey;
using platform::Value;

namespace {

// A number read as 32 bits without sign: what does not fit loses its upper bits, a fraction is cut off. Absent for
// what is no number, or one that no integer can hold.
std::optional<std::uint32_t> unsigned32(Value const& value)
{
    if (auto const number = value.asInt())
        return static_cast<std::uint32_t>(*number);
    if (auto const number = value.asUInt64())
        return static_cast<std::uint32_t>(*number);
    constexpr double limit = 9.2e18;
    auto const number = value.asDouble();
    if (!number || !(*number > -limit && *number < limit))
        return std::nullopt;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(*number));
}

// A number is true unless it is zero, whatever kind of number it is.
bool isTrue(Value const& value)
{
    auto const isNumber = value.asInt() || value.asUInt64() || value.asDouble();
    return value.asBool().value_or(isNumber);
}

// Null when there is none.
Value const& valueOf(platform::Dictionary const& dictionary, char const* key)
{
    static Value const none;
    auto const found = dictionary.find(key);
    return found == dictionary.end() ? none : found->second;
}

struct Standard {
    Key key;
    std::uint32_t modifiers;
};

constexpr Standard standardCombos[] = {
    { Key::comma, cmdKey },
    { Key::h, cmdKey },
    { Key::h, cmdKey | optionKey },
    { Key::q, cmdKey },
    { Key::n, cmdKey },
    { Key::o, cmdKey },
    { Key::w, cmdKey },
    { Key::s, cmdKey },
    { Key::s, cmdKey | shiftKey },
    { Key::r, cmdKey },
    { Key::p, cmdKey | shiftKey },
    { Key::p, cmdKey },
    { Key::z, cmdKey },
    { Key::z, cmdKey | shiftKey },
    { Key::x, cmdKey },
    { Key::c, cmdKey },
    { Key::v, cmdKey },
    { Key::v, cmdKey | shiftKey | optionKey },
    { Key::a, cmdKey },
    { Key::f, cmdKey },
    { Key::f, cmdKey | optionKey },
    { Key::g, cmdKey },
    { Key::g, cmdKey | shiftKey },
    { Key::e, cmdKey },
    { Key::j, cmdKey },
    { Key::semicolon, cmdKey | shiftKey },
    { Key::semicolon, cmdKey },
    { Key::t, cmdKey },
    { Key::b, cmdKey },
    { Key::i, cmdKey },
    { Key::u, cmdKey },
    { Key::equal, cmdKey | shiftKey },
    { Key::minus, cmdKey },
    { Key::c, cmdKey | shiftKey },
    { Key::c, cmdKey | optionKey },
    { Key::v, cmdKey | optionKey },
    { Key::leftBracket, cmdKey | shiftKey },
    { Key::backslash, cmdKey | shiftKey },
    { Key::rightBracket, cmdKey | shiftKey },
    { Key::c, cmdKey | controlKey },
    { Key::v, cmdKey | controlKey },
    { Key::t, cmdKey | optionKey },
    { Key::s, cmdKey | controlKey },
    { Key::f, cmdKey | controlKey },
    { Key::m, cmdKey },
    { Key::slash, cmdKey | shiftKey },
};

} // namespace

std::vector<KeyCombo> KeyCombo::systemKeyCombos(platform::Platform& platform)
{
    auto* const service = platform.symbolicHotKeys();
    if (!service)
        return {};
    auto const copied = service->copySymbolicHotKeys();
    if (copied.status != platform::noErr || !copied.array)
        return {};
    std::vector<KeyCombo> combos;
    for (auto const& value : *copied.array) {
        auto const* const shortcut = value.asDictionary();
        if (!shortcut || !isTrue(valueOf(*shortcut, platform::kHISymbolicHotKeyEnabled)))
            continue;
        auto const keyCode = unsigned32(valueOf(*shortcut, platform::kHISymbolicHotKeyCode));
        auto const modifiers = unsigned32(valueOf(*shortcut, platform::kHISymbolicHotKeyModifiers));
        // As they stand: the system may use keys and modifiers that a hot key cannot have.
        if (keyCode && modifiers)
            combos.emplace_back(*keyCode, *modifiers);
    }
    return combos;
}

std::vector<KeyCombo> KeyCombo::mainMenuKeyCombos(platform::Platform& platform)
{
    platform::assertMainThread("KeyCombo.mainMenuKeyCombos");
    auto const menu = platform.application().mainMenu();
    return menu ? keyCombos(*menu) : std::vector<KeyCombo> {};
}

std::vector<KeyCombo> KeyCombo::keyCombos(platform::NSMenu const& menu)
{
    platform::assertMainThread("KeyCombo.keyCombos");
    std::vector<KeyCombo> combos;
    for (auto const& item : menu.itemArray()) {
        // A capital letter is the key alone: shift counts only when the mask has it.
        if (auto const key = Key::fromString(item->keyEquivalent()))
            combos.emplace_back(*key, item->keyEquivalentModifierMask());
        if (!item->submenu())
            continue;
        auto const inner = keyCombos(*item->submenu());
        combos.insert(combos.end(), inner.begin(), inner.end());
    }
    return combos;
}

std::vector<KeyCombo> KeyCombo::standardKeyCombos()
{
    std::vector<KeyCombo> combos;
    for (auto const& standard : standardCombos)
        combos.emplace_back(standard.key.carbonKeyCode(), standard.modifiers);
    return combos;
}

} // namespace hotkey
