#include "hotkey/Key.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

using hotkey::Key;

namespace {

struct Expected {
    Key key;
    std::uint32_t carbonKeyCode;
    std::string description;
};

// Written down a second time, so that a slip in the table does not pass. Decimal here, hexadecimal there.
// clang-format off
std::vector<Expected> const everyKey {
    { Key::a, 0, "A" },
    { Key::b, 11, "B" },
    { Key::c, 8, "C" },
    { Key::d, 2, "D" },
    { Key::e, 14, "E" },
    { Key::f, 3, "F" },
    { Key::g, 5, "G" },
    { Key::h, 4, "H" },
    { Key::i, 34, "I" },
    { Key::j, 38, "J" },
    { Key::k, 40, "K" },
    { Key::l, 37, "L" },
    { Key::m, 46, "M" },
    { Key::n, 45, "N" },
    { Key::o, 31, "O" },
    { Key::p, 35, "P" },
    { Key::q, 12, "Q" },
    { Key::r, 15, "R" },
    { Key::s, 1, "S" },
    { Key::t, 17, "T" },
    { Key::u, 32, "U" },
    { Key::v, 9, "V" },
    { Key::w, 13, "W" },
    { Key::x, 7, "X" },
    { Key::y, 16, "Y" },
    { Key::z, 6, "Z" },
    { Key::zero, 29, "0" },
    { Key::one, 18, "1" },
    { Key::two, 19, "2" },
    { Key::three, 20, "3" },
    { Key::four, 21, "4" },
    { Key::five, 23, "5" },
    { Key::six, 22, "6" },
    { Key::seven, 26, "7" },
    { Key::eight, 28, "8" },
    { Key::nine, 25, "9" },
    { Key::period, 47, "." },
    { Key::quote, 39, "\"" },
    { Key::rightBracket, 30, "]" },
    { Key::semicolon, 41, ";" },
    { Key::slash, 44, "/" },
    { Key::backslash, 42, "\\" },
    { Key::comma, 43, "," },
    { Key::equal, 24, "=" },
    { Key::grave, 50, "`" },
    { Key::leftBracket, 33, "[" },
    { Key::minus, 27, "-" },
    { Key::section, 10, "\u00A7" },
    { Key::space, 49, "\u2423" },
    { Key::tab, 48, "\u21E5" },
    { Key::return_, 36, "\u21A9\uFE0E" },
    { Key::command, 55, "\u2318" },
    { Key::rightCommand, 54, "\u2318" },
    { Key::option, 58, "\u2325" },
    { Key::rightOption, 61, "\u2325" },
    { Key::control, 59, "\u2303" },
    { Key::rightControl, 62, "\u2303" },
    { Key::shift, 56, "\u21E7" },
    { Key::rightShift, 60, "\u21E7" },
    { Key::function, 63, "fn" },
    { Key::capsLock, 57, "\u21EA" },
    { Key::pageUp, 116, "\u21DE" },
    { Key::pageDown, 121, "\u21DF" },
    { Key::home, 115, "\u2196" },
    { Key::end, 119, "\u2198" },
    { Key::upArrow, 126, "\u2191" },
    { Key::rightArrow, 124, "\u2192" },
    { Key::downArrow, 125, "\u2193" },
    { Key::leftArrow, 123, "\u2190" },
    { Key::f1, 122, "\uF860F1" },
    { Key::f2, 120, "\uF860F2" },
    { Key::f3, 99, "\uF860F3" },
    { Key::f4, 118, "\uF860F4" },
    { Key::f5, 96, "\uF860F5" },
    { Key::f6, 97, "\uF860F6" },
    { Key::f7, 98, "\uF860F7" },
    { Key::f8, 100, "\uF860F8" },
    { Key::f9, 101, "\uF860F9" },
    { Key::f10, 109, "\uF861F10" },
    { Key::f11, 103, "\uF861F11" },
    { Key::f12, 111, "\uF861F12" },
    { Key::f13, 105, "\uF861F13" },
    { Key::f14, 107, "\uF861F14" },
    { Key::f15, 113, "\uF861F15" },
    { Key::f16, 106, "\uF861F16" },
    { Key::f17, 64, "\uF861F17" },
    { Key::f18, 79, "\uF861F18" },
    { Key::f19, 80, "\uF861F19" },
    { Key::f20, 90, "\uF861F20" },
    { Key::keypad0, 82, "0" },
    { Key::keypad1, 83, "1" },
    { Key::keypad2, 84, "2" },
    { Key::keypad3, 85, "3" },
    { Key::keypad4, 86, "4" },
    { Key::keypad5, 87, "5" },
    { Key::keypad6, 88, "6" },
    { Key::keypad7, 89, "7" },
    { Key::keypad8, 91, "8" },
    { Key::keypad9, 92, "9" },
    { Key::keypadClear, 71, "\u2327" },
    { Key::keypadDecimal, 65, "." },
    { Key::keypadDivide, 75, "/" },
    { Key::keypadEnter, 76, "\u21A9\uFE0E" },
    { Key::keypadEquals, 81, "=" },
    { Key::keypadMinus, 78, "-" },
    { Key::keypadMultiply, 67, "\U0001D5D1" },
    { Key::keypadPlus, 69, "+" },
    { Key::escape, 53, "\u238B" },
    { Key::delete_, 51, "\u232B" },
    { Key::forwardDelete, 117, "\u2326" },
    { Key::help, 114, "?\u20DD" },
    { Key::volumeUp, 72, "\U0001F50A" },
    { Key::volumeDown, 73, "\U0001F509" },
    { Key::mute, 74, "\U0001F507" },
};
// clang-format on

std::string const smallFunctionKeyCap = "\uF860";
std::string const largeFunctionKeyCap = "\uF861";

} // namespace

TEST(KeyTest, EachKeyHasItsCodeAndItsText)
{
    ASSERT_EQ(everyKey.size(), 114u);
    ASSERT_EQ(Key::allCases().size(), everyKey.size());
    for (std::size_t i = 0; i < everyKey.size(); ++i) {
        auto const& expected = everyKey[i];
        EXPECT_EQ(Key::allCases()[i], expected.key) << i;
        EXPECT_EQ(expected.key.carbonKeyCode(), expected.carbonKeyCode) << expected.description;
        EXPECT_EQ(expected.key.description(), expected.description) << i;
    }
}

TEST(KeyTest, ACodeLeadsBackToItsKeyAndOtherCodesToNone)
{
    std::map<std::uint32_t, Key> keysByCode;
    for (auto const& expected : everyKey)
        keysByCode.emplace(expected.carbonKeyCode, expected.key);
    EXPECT_EQ(keysByCode.size(), everyKey.size());
    for (std::uint32_t code = 0; code < 1000; ++code) {
        auto const known = keysByCode.find(code);
        EXPECT_EQ(
            Key::fromCarbonKeyCode(code), known == keysByCode.end() ? std::nullopt : std::optional<Key>(known->second))
            << code;
    }
    for (std::uint32_t const unused : { 52u, 66u, 68u, 70u, 77u, 93u, 94u, 95u, 102u, 104u, 108u, 110u, 112u, 127u,
             128u, 255u, 256u, 65535u, 0x80000000u, 0xFFFFFFFFu })
        EXPECT_FALSE(Key::fromCarbonKeyCode(unused)) << unused;
}

TEST(KeyTest, KeysAreEqualAndHashedByCase)
{
    EXPECT_EQ(Key::command, Key::command);
    EXPECT_NE(Key::command, Key::rightCommand);
    EXPECT_NE(Key::one, Key::keypad1);
    std::unordered_set<Key> const keys(Key::allCases().begin(), Key::allCases().end());
    EXPECT_EQ(keys.size(), 114u);
    EXPECT_TRUE(keys.contains(Key::mute));
}

TEST(KeyTest, LettersAndDigitsAreFoundByWhatTheyType)
{
    for (int i = 0; i < 26; ++i) {
        EXPECT_EQ(
            Key::fromString(std::string(1, static_cast<char>('a' + i))), everyKey[static_cast<std::size_t>(i)].key);
        EXPECT_EQ(
            Key::fromString(std::string(1, static_cast<char>('A' + i))), everyKey[static_cast<std::size_t>(i)].key);
    }
    char const* const names[] = { "zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine" };
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(Key::fromString(std::to_string(i)), everyKey[26 + i].key);
        EXPECT_EQ(Key::fromString(names[i]), everyKey[26 + i].key);
        EXPECT_EQ(Key::fromString("keypad" + std::to_string(i)), everyKey[89 + i].key);
    }
    for (std::size_t i = 1; i <= 20; ++i) {
        EXPECT_EQ(Key::fromString("f" + std::to_string(i)), everyKey[68 + i].key);
        EXPECT_EQ(Key::fromString("F" + std::to_string(i)), everyKey[68 + i].key);
    }
}

TEST(KeyTest, OtherKeysAreFoundByNameCharacterOrSymbol)
{
    std::vector<std::pair<std::string, Key>> const literals {
        { "=", Key::equal },
        { "equal", Key::equal },
        { "-", Key::minus },
        { "minus", Key::minus },
        { "]", Key::rightBracket },
        { "[", Key::leftBracket },
        { "\x22", Key::quote },
        { "quote", Key::quote },
        { ";", Key::semicolon },
        { "semicolon", Key::semicolon },
        { "\\", Key::backslash },
        { "backslash", Key::backslash },
        { ",", Key::comma },
        { "comma", Key::comma },
        { "/", Key::slash },
        { "slash", Key::slash },
        { ".", Key::period },
        { "period", Key::period },
        { "`", Key::grave },
        { "grave", Key::grave },
        { "\xCB\x8B", Key::grave },
        { "\xEF\xBD\x80", Key::grave },
        { "keypaddecimal", Key::keypadDecimal },
        { "keypadmultiply", Key::keypadMultiply },
        { "keypadplus", Key::keypadPlus },
        { "keypadclear", Key::keypadClear },
        { "\u2327", Key::keypadClear },
        { "keypaddivide", Key::keypadDivide },
        { "keypadenter", Key::keypadEnter },
        { "keypadminus", Key::keypadMinus },
        { "keypadequals", Key::keypadEquals },
        { "return", Key::return_ },
        { "\r", Key::return_ },
        { "\u21A9\uFE0E", Key::return_ },
        { "tab", Key::tab },
        { "\t", Key::tab },
        { "\u21E5", Key::tab },
        { "space", Key::space },
        { " ", Key::space },
        { "\u2423", Key::space },
        { "delete", Key::delete_ },
        { "\u232B", Key::delete_ },
        { "forwarddelete", Key::forwardDelete },
        { "\u2326", Key::forwardDelete },
        { "escape", Key::escape },
        { "\u238B", Key::escape },
        { "command", Key::command },
        { "shift", Key::shift },
        { "capslock", Key::capsLock },
        { "option", Key::option },
        { "control", Key::control },
        { "\u2303", Key::control },
        { "rightcommand", Key::rightCommand },
        { "rightshift", Key::rightShift },
        { "rightoption", Key::rightOption },
        { "rightcontrol", Key::rightControl },
        { "function", Key::function },
        { "fn", Key::function },
        { "volumeup", Key::volumeUp },
        { "\U0001F50A", Key::volumeUp },
        { "volumedown", Key::volumeDown },
        { "\U0001F509", Key::volumeDown },
        { "mute", Key::mute },
        { "\U0001F507", Key::mute },
        { "help", Key::help },
        { "?\u20DD", Key::help },
        { "home", Key::home },
        { "\u2196", Key::home },
        { "end", Key::end },
        { "pageup", Key::pageUp },
        { "\u21DE", Key::pageUp },
        { "pagedown", Key::pageDown },
        { "leftarrow", Key::leftArrow },
        { "\u2190", Key::leftArrow },
        { "rightarrow", Key::rightArrow },
        { "downarrow", Key::downArrow },
        { "uparrow", Key::upArrow },
        { "section", Key::section },
        { "\u00A7", Key::section },
        // Whatever the case.
        { "ForwardDelete", Key::forwardDelete },
        { "KeypadEquals", Key::keypadEquals },
        { "PAGEUP", Key::pageUp },
        { "\u212A", Key::k },
        { "bac\u212Aslash", Key::backslash },
    };
    for (auto const& [text, key] : literals)
        EXPECT_EQ(Key::fromString(text), key) << text;
}

TEST(KeyTest, BracketsByNameAndFunctionKeysByKeyCapAreNotFound)
{
    for (auto const* const name : { "rightBracket", "leftBracket", "rightbracket", "leftbracket" })
        EXPECT_FALSE(Key::fromString(name)) << name;
    for (int i = 1; i <= 20; ++i) {
        for (auto const& cap : { smallFunctionKeyCap, largeFunctionKeyCap }) {
            EXPECT_FALSE(Key::fromString(cap + "F" + std::to_string(i))) << i;
            EXPECT_FALSE(Key::fromString(cap + "f" + std::to_string(i))) << i;
        }
    }
    EXPECT_FALSE(Key::fromString(Key::f5.description()));
}

TEST(KeyTest, OtherTextsAreNoKey)
{
    std::string const withZero("a\0", 2);
    for (auto const& text : std::vector<std::string> { "", "aa", " a", "f0", "f21", "keypad10", "ten", "+", "*", "?",
             "\n", "\x22\x22", "\u21A9", "\u232B\uFE0E", "\u00E4", "\xFF", "\xE2\x84", "return_", "left", withZero })
        EXPECT_FALSE(Key::fromString(text)) << text;
}

TEST(KeyTest, SymbolsThatTwoKeysShareOrThatWereNeverReadAreNoKey)
{
    for (auto const* const symbol :
        { "\u2318", "\u2325", "\u21E7", "\u21EA", "\u2198", "\u21DF", "\u2191", "\u2192", "\u2193", "\U0001D5D1" })
        EXPECT_FALSE(Key::fromString(symbol)) << symbol;
}
