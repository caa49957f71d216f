#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace hotkey {

// A key of the keyboard that a hot key can use, by its position on an ANSI keyboard and whatever the layout writes on
// it. An enumeration whose cases can be asked: Key::n, Key::f5, Key::leftArrow. Any thread.
class Key {
public:
    static constexpr std::size_t caseCount = 114;

#define PANEWELD_KEY(name, code, text) static Key const name;
#include "hotkey/KeyTable.inc"
#undef PANEWELD_KEY

    static std::array<Key, caseCount> const& allCases();

    // The key with this Carbon virtual key code (kVK_...). Absent for a code that no key has.
    static std::optional<Key> fromCarbonKeyCode(std::uint32_t carbonKeyCode);
    // The key that a text names, in either case: what it types ("n", "["), its name ("forwarddelete", "f5") or, for
    // some, its symbol ("⌫"). Absent for any other text.
    static std::optional<Key> fromString(std::string_view string);

    std::uint32_t carbonKeyCode() const;
    // What menus show: "N", "⌫". Several keys show the same.
    std::string_view description() const;

    constexpr bool operator==(Key const&) const = default;

private:
    friend struct std::hash<Key>;
    enum class Case : std::uint8_t {
#define PANEWELD_KEY(name, code, text) name,
#include "hotkey/KeyTable.inc"
#undef PANEWELD_KEY
    };

    explicit constexpr Key(Case value)
        : m_case(value)
    {
    }

    Case m_case;
};

#define PANEWELD_KEY(name, code, text) inline constexpr Key Key::name { Key::Case::name };
#include "hotkey/KeyTable.inc"
#undef PANEWELD_KEY

} // namespace hotkey

template<>
struct std::hash<hotkey::Key> {
    std::size_t operator()(hotkey::Key key) const noexcept { return static_cast<std::size_t>(key.m_case); }
};
