#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace backends {

// The names of key symbols, as far as shortcuts use them: what a key writes or does, apart from where it lies (X
// Window System Protocol, Appendix A). Any thread.

// What desktops call the key above Tab, whatever is written there: a place among symbols, with a number that no symbol
// has.
constexpr std::uint32_t aboveTabKeysym = 0x1FFFFF00;

// "n", "Return", "KP_Add", "eacute", or a character by its number, "U20AC" and "U+20AC". A name in the wrong case is
// found too, as desktops do. Absent for any other name.
std::optional<std::uint32_t> keysymNamed(std::string_view name);

// The name that desktops know best: "n" for 0x6e, "Return" for 0xff0d, "U20AC" for a character without a name.
std::optional<std::string> nameOfKeysym(std::uint32_t keysym);

// The symbol of a Unicode character. Absent for controls and for what is no character.
std::optional<std::uint32_t> keysymOfCharacter(char32_t character);

// What the same key writes without Shift: "a" for "A". Anything but a letter of Latin-1 stays.
std::uint32_t lowerCaseKeysym(std::uint32_t keysym);

} // namespace backends
