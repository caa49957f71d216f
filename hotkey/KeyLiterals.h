#pragma once

#include "hotkey/Key.h"

#include <array>
#include <string_view>

namespace hotkey {

// A text that stands for a key.
struct KeyLiteral {
    std::string_view text;
    Key key;
};

// What Key::fromString compares a lower-cased text with, in this order: the first that is equal gives the key.
//
// Those with an upper-case letter can never match. They stay so on purpose: texts that were refused as a shortcut must
// not come to life. Brackets are found by their characters alone, function keys by "f1" to "f20".
//
// Nothing else is taken, neither the symbols of ⌘, ⌥ and ⇧, which two keys share, nor those of end, page down and three
// of the arrows: a shortcut that one program stored as text has to read alike in every other.
// clang-format off
inline constexpr std::array<KeyLiteral, 177> keyLiterals { {
    { "a", Key::a },
    { "b", Key::b },
    { "c", Key::c },
    { "d", Key::d },
    { "e", Key::e },
    { "f", Key::f },
    { "g", Key::g },
    { "h", Key::h },
    { "i", Key::i },
    { "j", Key::j },
    { "k", Key::k },
    { "l", Key::l },
    { "m", Key::m },
    { "n", Key::n },
    { "o", Key::o },
    { "p", Key::p },
    { "q", Key::q },
    { "r", Key::r },
    { "s", Key::s },
    { "t", Key::t },
    { "u", Key::u },
    { "v", Key::v },
    { "w", Key::w },
    { "x", Key::x },
    { "y", Key::y },
    { "z", Key::z },
    { "0", Key::zero }, { "zero", Key::zero },
    { "1", Key::one }, { "one", Key::one },
    { "2", Key::two }, { "two", Key::two },
    { "3", Key::three }, { "three", Key::three },
    { "4", Key::four }, { "four", Key::four },
    { "5", Key::five }, { "five", Key::five },
    { "6", Key::six }, { "six", Key::six },
    { "7", Key::seven }, { "seven", Key::seven },
    { "8", Key::eight }, { "eight", Key::eight },
    { "9", Key::nine }, { "nine", Key::nine },
    { "=", Key::equal }, { "equal", Key::equal },
    { "-", Key::minus }, { "minus", Key::minus },
    // The names never match: see above.
    { "]", Key::rightBracket }, { "rightBracket", Key::rightBracket },
    { "[", Key::leftBracket }, { "leftBracket", Key::leftBracket },
    { "\"", Key::quote }, { "quote", Key::quote },
    { ";", Key::semicolon }, { "semicolon", Key::semicolon },
    { "\\", Key::backslash }, { "backslash", Key::backslash },
    { ",", Key::comma }, { "comma", Key::comma },
    { "/", Key::slash }, { "slash", Key::slash },
    { ".", Key::period }, { "period", Key::period },
    { "`", Key::grave }, { "grave", Key::grave }, { "\u02CB", Key::grave }, { "\uFF40", Key::grave },
    { "keypad0", Key::keypad0 },
    { "keypad1", Key::keypad1 },
    { "keypad2", Key::keypad2 },
    { "keypad3", Key::keypad3 },
    { "keypad4", Key::keypad4 },
    { "keypad5", Key::keypad5 },
    { "keypad6", Key::keypad6 },
    { "keypad7", Key::keypad7 },
    { "keypad8", Key::keypad8 },
    { "keypad9", Key::keypad9 },
    { "keypaddecimal", Key::keypadDecimal },
    { "keypadmultiply", Key::keypadMultiply },
    { "keypadplus", Key::keypadPlus },
    { "keypadclear", Key::keypadClear }, { "⌧", Key::keypadClear },
    { "keypaddivide", Key::keypadDivide },
    { "keypadenter", Key::keypadEnter },
    { "keypadminus", Key::keypadMinus },
    { "keypadequals", Key::keypadEquals },
    { "return", Key::return_ }, { "\r", Key::return_ }, { "↩\uFE0E", Key::return_ },
    { "tab", Key::tab }, { "\t", Key::tab }, { "⇥", Key::tab },
    { "space", Key::space }, { " ", Key::space }, { "␣", Key::space },
    { "delete", Key::delete_ }, { "⌫", Key::delete_ },
    { "forwarddelete", Key::forwardDelete }, { "⌦", Key::forwardDelete },
    { "escape", Key::escape }, { "⎋", Key::escape },
    { "command", Key::command },
    { "shift", Key::shift },
    { "capslock", Key::capsLock },
    { "option", Key::option },
    { "control", Key::control }, { "⌃", Key::control },
    { "rightcommand", Key::rightCommand },
    { "rightshift", Key::rightShift },
    { "rightoption", Key::rightOption },
    { "rightcontrol", Key::rightControl },
    { "function", Key::function }, { "fn", Key::function },
    // The key caps never match: see above.
    { "f1", Key::f1 }, { "\uF860F1", Key::f1 },
    { "f2", Key::f2 }, { "\uF860F2", Key::f2 },
    { "f3", Key::f3 }, { "\uF860F3", Key::f3 },
    { "f4", Key::f4 }, { "\uF860F4", Key::f4 },
    { "f5", Key::f5 }, { "\uF860F5", Key::f5 },
    { "f6", Key::f6 }, { "\uF860F6", Key::f6 },
    { "f7", Key::f7 }, { "\uF860F7", Key::f7 },
    { "f8", Key::f8 }, { "\uF860F8", Key::f8 },
    { "f9", Key::f9 }, { "\uF860F9", Key::f9 },
    { "f10", Key::f10 }, { "\uF861F10", Key::f10 },
    { "f11", Key::f11 }, { "\uF861F11", Key::f11 },
    { "f12", Key::f12 }, { "\uF861F12", Key::f12 },
    { "f13", Key::f13 }, { "\uF861F13", Key::f13 },
    { "f14", Key::f14 }, { "\uF861F14", Key::f14 },
    { "f15", Key::f15 }, { "\uF861F15", Key::f15 },
    { "f16", Key::f16 }, { "\uF861F16", Key::f16 },
    { "f17", Key::f17 }, { "\uF861F17", Key::f17 },
    { "f18", Key::f18 }, { "\uF861F18", Key::f18 },
    { "f19", Key::f19 }, { "\uF861F19", Key::f19 },
    { "f20", Key::f20 }, { "\uF861F20", Key::f20 },
    { "volumeup", Key::volumeUp }, { "🔊", Key::volumeUp },
    { "volumedown", Key::volumeDown }, { "🔉", Key::volumeDown },
    { "mute", Key::mute }, { "🔇", Key::mute },
    { "help", Key::help }, { "?\u20DD", Key::help },
    { "home", Key::home }, { "↖", Key::home },
    { "end", Key::end },
    { "pageup", Key::pageUp }, { "⇞", Key::pageUp },
    { "pagedown", Key::pageDown },
    { "leftarrow", Key::leftArrow }, { "←", Key::leftArrow },
    { "rightarrow", Key::rightArrow },
    { "downarrow", Key::downArrow },
    { "uparrow", Key::upArrow },
    { "section", Key::section }, { "§", Key::section },
} };
// clang-format on

} // namespace hotkey
