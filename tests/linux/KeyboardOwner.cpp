#include "tests/linux/KeyboardOwner.h"

#include "backends/linux/x11/Handles.h"
#include "backends/linux/x11/Xkb.h"

#include "tests/linux/ChildProcess.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace paneweld_tests {

namespace {

// clang-format off
std::map<std::uint32_t, xcb_keycode_t> const keycodes {
    // Letters, row by row as they lie: A S D F H G Z X C V, the ISO key, B Q W E R Y T.
    { 0, 38 }, { 1, 39 }, { 2, 40 }, { 3, 41 }, { 4, 43 }, { 5, 42 }, { 6, 52 }, { 7, 53 }, { 8, 54 }, { 9, 55 },
    { 10, 94 }, { 11, 56 }, { 12, 24 }, { 13, 25 }, { 14, 26 }, { 15, 27 }, { 16, 29 }, { 17, 28 },
    // 1 2 3 4 6 5 = 9 7 - 8 0 ] O U [ I P Return L J ' K ; \ , / N M . Tab Space ` Backspace Escape.
    { 18, 10 }, { 19, 11 }, { 20, 12 }, { 21, 13 }, { 22, 15 }, { 23, 14 }, { 24, 21 }, { 25, 18 }, { 26, 16 },
    { 27, 20 }, { 28, 17 }, { 29, 19 }, { 30, 35 }, { 31, 32 }, { 32, 30 }, { 33, 34 }, { 34, 31 }, { 35, 33 },
    { 36, 36 }, { 37, 46 }, { 38, 44 }, { 39, 48 }, { 40, 45 }, { 41, 47 }, { 42, 51 }, { 43, 59 }, { 44, 61 },
    { 45, 57 }, { 46, 58 }, { 47, 60 }, { 48, 23 }, { 49, 65 }, { 50, 49 }, { 51, 22 }, { 53, 9 },
    // Modifiers: right and left Super, Shift, Caps, Alt, Control; right Shift, Alt, Control.
    { 54, 134 }, { 55, 133 }, { 56, 50 }, { 57, 66 }, { 58, 64 }, { 59, 37 }, { 60, 62 }, { 61, 108 }, { 62, 105 },
    // Keypad and media keys.
    { 65, 91 }, { 67, 63 }, { 69, 86 }, { 71, 77 }, { 72, 123 }, { 73, 122 }, { 74, 121 }, { 75, 106 }, { 76, 104 },
    { 78, 82 }, { 81, 125 }, { 82, 90 }, { 83, 87 }, { 84, 88 }, { 85, 89 }, { 86, 83 }, { 87, 84 }, { 88, 85 },
    { 89, 79 }, { 91, 80 }, { 92, 81 },
    // F1 to F20.
    { 122, 67 }, { 120, 68 }, { 99, 69 }, { 118, 70 }, { 96, 71 }, { 97, 72 }, { 98, 73 }, { 100, 74 }, { 101, 75 },
    { 109, 76 }, { 103, 95 }, { 111, 96 }, { 105, 191 }, { 107, 192 }, { 113, 193 }, { 106, 194 }, { 64, 195 },
    { 79, 196 }, { 80, 197 }, { 90, 198 },
    // Insert, Home, Page Up, Delete, End, Page Down, and the arrows.
    { 114, 118 }, { 115, 110 }, { 116, 112 }, { 117, 119 }, { 119, 115 }, { 121, 117 }, { 123, 113 }, { 124, 114 },
    { 125, 116 }, { 126, 111 },
};
// clang-format on

} // namespace

std::optional<xcb_keycode_t> evdevKeycode(std::uint32_t virtualKeyCode)
{
    auto const found = keycodes.find(virtualKeyCode);
    return found == keycodes.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::uint32_t> virtualKeyCodesOfKeyboard()
{
    std::vector<std::uint32_t> codes;
    for (auto const& [code, key] : keycodes)
        codes.push_back(code);
    return codes;
}

void KeyboardOwner::setLayout(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), { "setxkbmap", "-display", display() });
    ChildProcess program(arguments);
    EXPECT_TRUE(waitUntil([&] { return !program.isRunning(); }));
    sync();
}

void KeyboardOwner::lockGroup(int group)
{
    xcb_discard_reply(wire(), xcb_xkb_use_extension(wire(), 1, 0).sequence);
    xcb_xkb_latch_lock_state(wire(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, static_cast<std::uint8_t>(group), 0, 0, 0);
    sync();
}

void KeyboardOwner::setModifierKeys(int modifier, std::vector<xcb_keycode_t> const& keys)
{
    backends::XHandle<xcb_get_modifier_mapping_reply_t> const before(
        xcb_get_modifier_mapping_reply(wire(), xcb_get_modifier_mapping(wire()), nullptr));
    int const perModifier = std::max<int>(before->keycodes_per_modifier, static_cast<int>(keys.size()));
    std::vector<xcb_keycode_t> map(static_cast<std::size_t>(8 * perModifier));
    auto const* const old = xcb_get_modifier_mapping_keycodes(before.get());
    for (int i = 0; i < 8; ++i) {
        for (int k = 0; k < before->keycodes_per_modifier; ++k)
            map[static_cast<std::size_t>(i * perModifier + k)] = old[i * before->keycodes_per_modifier + k];
    }
    for (int k = 0; k < perModifier; ++k) {
        auto const index = static_cast<std::size_t>(modifier * perModifier + k);
        map[index] = k < static_cast<int>(keys.size()) ? keys[static_cast<std::size_t>(k)] : xcb_keycode_t { 0 };
    }
    backends::XHandle<xcb_set_modifier_mapping_reply_t> const done(xcb_set_modifier_mapping_reply(
        wire(), xcb_set_modifier_mapping(wire(), static_cast<std::uint8_t>(perModifier), map.data()), nullptr));
    EXPECT_TRUE(done && done->status == XCB_MAPPING_STATUS_SUCCESS) << "the modifiers were not changed";
}

void KeyboardOwner::setRepeat(int delay, int interval)
{
    xcb_discard_reply(wire(), xcb_xkb_use_extension(wire(), 1, 0).sequence);
    std::uint8_t const noKeys[32] {};
    xcb_xkb_set_controls(wire(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        XCB_XKB_BOOL_CTRL_REPEAT_KEYS, static_cast<std::uint16_t>(delay), static_cast<std::uint16_t>(interval), 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, noKeys);
    sync();
}

std::uint16_t KeyboardOwner::modifierState()
{
    backends::XHandle<xcb_query_pointer_reply_t> const reply(
        xcb_query_pointer_reply(wire(), xcb_query_pointer(wire(), root()), nullptr));
    return static_cast<std::uint16_t>(reply->mask & 0xFF);
}

bool KeyboardOwner::becomesFree(xcb_keycode_t key, std::uint16_t modifiers)
{
    return waitUntil([&] { return isFree(key, modifiers); });
}

bool KeyboardOwner::canGrabKeyboard()
{
    backends::XHandle<xcb_grab_keyboard_reply_t> const reply(xcb_grab_keyboard_reply(wire(),
        xcb_grab_keyboard(wire(), 0, root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC), nullptr));
    xcb_ungrab_keyboard(wire(), XCB_CURRENT_TIME);
    sync();
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

xcb_window_t KeyboardOwner::focus()
{
    backends::XHandle<xcb_get_input_focus_reply_t> const reply(
        xcb_get_input_focus_reply(wire(), xcb_get_input_focus(wire()), nullptr));
    return reply->focus;
}

} // namespace paneweld_tests
