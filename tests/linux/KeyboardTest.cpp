#include "backends/linux/x11/KeyLabel.h"
#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/LinuxTest.h"

namespace paneweld_tests {

using backends::keyLabel;
using Flags = platform::NSEventModifierFlags;

namespace {

constexpr std::uint32_t keyOfA = 0, keyOfN = 45, keyOfOne = 18, keyOfSpace = 49, keyOfF5 = 96, keyOfKeypad7 = 89;

} // namespace

class Keyboard : public LinuxTest {
protected:
    void open()
    {
        start(With::Nothing);
        user = std::make_unique<KeyboardOwner>(desktop->display());
        ASSERT_TRUE(pumpUntil([&] { return backend->keyLabel(keyOfA) == "A"; }));
    }

    std::unique_ptr<KeyboardOwner> user;
};

TEST_F(Keyboard, TellsThePositionOfAKeycode)
{
    open();
    EXPECT_EQ(backend->virtualKeyCode(57), keyOfN);
    for (auto const code : virtualKeyCodesOfKeyboard())
        EXPECT_EQ(backend->virtualKeyCode(*evdevKeycode(code)), code);
    EXPECT_FALSE(backend->virtualKeyCode(0));
    EXPECT_FALSE(backend->virtualKeyCode(255));
    // One byte of it would be a key.
    EXPECT_FALSE(backend->virtualKeyCode(256 + 57));
}

TEST_F(Keyboard, TellsWhatTheLayoutWritesOnAKey)
{
    open();
    for (auto const code : { keyOfSpace, keyOfF5, keyOfKeypad7, 1000u })
        EXPECT_FALSE(backend->keyLabel(code)) << code;

    user->setLayout({ "fr" });
    EXPECT_TRUE(pumpUntil([&] { return backend->keyLabel(keyOfA) == "Q"; }));
    EXPECT_EQ(backend->keyLabel(keyOfOne), "&");
    // The position is the same one, whatever is written there.
    EXPECT_EQ(backend->virtualKeyCode(*evdevKeycode(keyOfA)), keyOfA);

    user->setLayout({ "ru" });
    EXPECT_TRUE(pumpUntil([&] { return backend->keyLabel(keyOfA) == "Ф"; }));
    EXPECT_EQ(backend->keyLabel(keyOfN), "Т");
}

TEST_F(Keyboard, TellsTheModifiersOfAnEventWithoutItsOtherBits)
{
    open();
    EXPECT_EQ(backend->hotKeyModifiers(0), Flags {});
    EXPECT_EQ(backend->hotKeyModifiers(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1), Flags::control | Flags::option);
    EXPECT_EQ(backend->hotKeyModifiers(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_4), Flags::shift | Flags::command);
    // Caps Lock and Num Lock, the first button, the second layout, and a bit that only toolkits know.
    auto const others = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 | XCB_BUTTON_MASK_1 | 1u << 13 | 1u << 26;
    EXPECT_EQ(backend->hotKeyModifiers(others), Flags {});
    EXPECT_EQ(backend->hotKeyModifiers(others | XCB_MOD_MASK_CONTROL), Flags::control);
}

TEST(KeyLabel, IsWhatIsPrintedOnTheKey)
{
    // Symbols of the X protocol: a, n, 1, &, odiaeresis, division, ssharp, ydiaeresis.
    struct Printed {
        xcb_keysym_t symbol;
        char const* label;
    };
    Printed const latin[] = { { 'a', "A" }, { 'N', "N" }, { '1', "1" }, { '&', "&" }, { 0xF6, "Ö" }, { 0xF7, "÷" },
        { 0xDF, "ß" }, { 0xFF, "Ÿ" } };
    for (auto const& [symbol, label] : latin)
        EXPECT_EQ(keyLabel(symbol), label);
    // scaron, lstroke, zcaron, Cyrillic_yu, Cyrillic_HARDSIGN, Greek_finalsmallsigma, Greek_OMEGA's small letter.
    Printed const older[] = { { 0x1B9, "Š" }, { 0x1B3, "Ł" }, { 0x1BE, "Ž" }, { 0x1E8, "Č" }, { 0x6C0, "Ю" },
        { 0x6DF, "Ъ" }, { 0x7F3, "Σ" }, { 0x7F9, "Ω" } };
    for (auto const& [symbol, label] : older)
        EXPECT_EQ(keyLabel(symbol), label);
    Printed const unicode[] = { { 0x1000131, "ı" }, { 0x100015F, "Ş" }, { 0x1000451, "Ё" }, { 0x10005D0, "א" },
        { 0x1001EB9, "Ẹ" }, { 0x10001B0, "Ư" } };
    for (auto const& [symbol, label] : unicode)
        EXPECT_EQ(keyLabel(symbol), label);
}

TEST(KeyLabel, IsAbsentForWhatIsNoText)
{
    // space, nobreakspace, Return, F5, KP_7, dead_acute, NoSymbol, a Unicode space, one past Unicode.
    for (xcb_keysym_t const symbol :
        { 0x20u, 0xA0u, 0xFF0Du, 0xFFC2u, 0xFFB7u, 0xFE51u, 0u, 0x1000020u, 0x1110000u, 0x6E0u + 0x100u })
        EXPECT_FALSE(keyLabel(symbol)) << symbol;
}

} // namespace paneweld_tests
