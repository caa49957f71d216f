#include "hotkey/KeyCombo.h"

#include "hotkey/NSEventModifierFlags+HotKey.h"
#include "platform/carbon/EventHotKeys.h"
#include "tests/support/RunOptions.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

using hotkey::Key;
using hotkey::KeyCombo;
using platform::Dictionary;
using platform::NSEventModifierFlags;

namespace {

constexpr std::uint32_t largest = std::numeric_limits<std::uint32_t>::max();

// Bits of an event that are no modifier of a hot key: caps lock, keypad, help, function, and others.
constexpr NSEventModifierFlags otherFlags { 0xFFFFFFFFFFE1FFFF };

} // namespace

TEST(KeyComboTest, CarbonBitsBecomeFlagsAndOthersAreDropped)
{
    EXPECT_EQ(hotkey::modifierFlags(0x100 | 0x800), NSEventModifierFlags::command | NSEventModifierFlags::option);
    EXPECT_EQ(hotkey::modifierFlags(0x200), NSEventModifierFlags::shift);
    EXPECT_EQ(hotkey::modifierFlags(0x1000), NSEventModifierFlags::control);
    EXPECT_EQ(hotkey::modifierFlags(0), NSEventModifierFlags {});
    EXPECT_EQ(hotkey::modifierFlags(largest & ~platform::hotKeyModifierBits), NSEventModifierFlags {});
    EXPECT_EQ(hotkey::modifierFlags(largest).rawValue, 0x1E0000u);
}

TEST(KeyComboTest, FlagsBecomeCarbonBitsAndOthersAreDropped)
{
    EXPECT_EQ(hotkey::carbon(NSEventModifierFlags::command | NSEventModifierFlags::option), 0x900u);
    EXPECT_EQ(hotkey::carbon(NSEventModifierFlags::control), 0x1000u);
    EXPECT_EQ(hotkey::carbon(NSEventModifierFlags::shift), 0x200u);
    EXPECT_EQ(hotkey::carbon({}), 0u);
    EXPECT_EQ(hotkey::carbon(otherFlags), 0u);
    EXPECT_EQ(hotkey::carbon(otherFlags | NSEventModifierFlags::command), 0x100u);
}

TEST(KeyComboTest, ModifiersAreShownInTheOrderOfMenus)
{
    EXPECT_EQ(hotkey::description({ 0xFFFFFFFFFFFFFFFF }), "⌃⌥⇧⌘");
    EXPECT_EQ(hotkey::description(NSEventModifierFlags::command | NSEventModifierFlags::shift), "⇧⌘");
    EXPECT_EQ(hotkey::description(NSEventModifierFlags::option | NSEventModifierFlags::control), "⌃⌥");
    EXPECT_EQ(hotkey::description(otherFlags), "");
    EXPECT_EQ(hotkey::description({}), "");
}

TEST(KeyComboTest, ACombinationIsShownAsItsModifiersAndItsKey)
{
    EXPECT_EQ(KeyCombo(45, 0x300).description(), "⇧⌘N");
    EXPECT_EQ(KeyCombo(36, 0x1000).description(), "⌃\u21A9\uFE0E");
    EXPECT_EQ(KeyCombo(0, 0).description(), "A");
    EXPECT_EQ(KeyCombo(Key::f5, NSEventModifierFlags::control | NSEventModifierFlags::shift).description(),
        "⌃⇧\uF860"
        "F5");
}

TEST(KeyComboTest, ACodeThatNoKeyHasIsShownAsTheModifiersAloneAndIsValidAllTheSame)
{
    KeyCombo const combo(127, 0x900);
    EXPECT_EQ(combo.description(), "⌥⌘");
    EXPECT_FALSE(combo.key());
    EXPECT_TRUE(combo.isValid());
    EXPECT_TRUE(KeyCombo(largest, largest).isValid());
    EXPECT_EQ(KeyCombo(largest, 0).description(), "");
}

TEST(KeyComboTest, BothNumbersAreStoredAsGiven)
{
    KeyCombo const combo(4000000000, 0xDEADBEEF);
    EXPECT_EQ(combo.carbonKeyCode, 4000000000u);
    EXPECT_EQ(combo.carbonModifiers, 0xDEADBEEFu);
    EXPECT_EQ(combo, KeyCombo(4000000000, 0xDEADBEEF));
    EXPECT_NE(combo, KeyCombo(4000000000, 0xDEADBEEE));
    EXPECT_NE(combo, KeyCombo(4000000001, 0xDEADBEEF));
    // What it means may be the same, the combination is not.
    EXPECT_NE(KeyCombo(45, 0x100), KeyCombo(45, 0x500));
}

TEST(KeyComboTest, EveryKeyWithEverySetOfModifiersComesBack)
{
    for (auto const key : Key::allCases()) {
        for (std::uint32_t bits = 0; bits < 16; ++bits) {
            NSEventModifierFlags const flags { std::uint64_t { bits } << 17 };
            KeyCombo const combo(key, { flags.rawValue | otherFlags.rawValue });
            ASSERT_EQ(combo.key(), key);
            ASSERT_EQ(combo.modifiers(), flags);
            ASSERT_EQ(combo.description(), hotkey::description(flags) + std::string(key.description()));
            ASSERT_EQ(KeyCombo::fromDictionary(combo.dictionary()), combo);
        }
    }
}

TEST(KeyComboTest, KeyAndModifiersCanBeWritten)
{
    KeyCombo combo(45, 0x300);
    combo.setKey(Key::keypadEnter);
    EXPECT_EQ(combo, KeyCombo(76, 0x300));
    combo.setModifiers(NSEventModifierFlags::control | NSEventModifierFlags::capsLock);
    EXPECT_EQ(combo, KeyCombo(76, 0x1000));
    combo.setKey(std::nullopt);
    EXPECT_EQ(combo, KeyCombo(0, 0x1000));
    EXPECT_EQ(combo.key(), Key::a);
}

TEST(KeyComboTest, TheStoredFormHasTwoSignedIntegers)
{
    auto const dictionary = KeyCombo(45, 0x100).dictionary();
    EXPECT_EQ(dictionary, (Dictionary { { "keyCode", 45 }, { "modifiers", 256 } }));
    for (auto const& entry : KeyCombo(largest, largest).dictionary()) {
        EXPECT_EQ(entry.second.kind(), platform::Value::Kind::Integer) << std::string_view(entry.first);
        EXPECT_EQ(entry.second.asInt(), 4294967295) << std::string_view(entry.first);
    }
}

TEST(KeyComboTest, AStoredFormIsReadBack)
{
    auto const combo = KeyCombo::fromDictionary({ { "keyCode", 45 }, { "modifiers", 256 }, { "other", "x" } });
    ASSERT_TRUE(combo);
    EXPECT_EQ(combo->key(), Key::n);
    EXPECT_EQ(combo->modifiers(), NSEventModifierFlags::command);
    // Numbers of another kind are integers when nothing is lost.
    EXPECT_EQ(KeyCombo::fromDictionary({ { "keyCode", 45.0 }, { "modifiers", 256u } }), KeyCombo(45, 256));
    EXPECT_EQ(KeyCombo::fromDictionary({ { "keyCode", true }, { "modifiers", 4294967295 } }), KeyCombo(1, largest));
}

TEST(KeyComboTest, AStoredFormWithoutTwoIntegersIsNone)
{
    for (auto const& dictionary : std::vector<Dictionary> { {}, { { "keyCode", 45 } }, { { "modifiers", 256 } },
             { { "keyCode", "45" }, { "modifiers", 256 } }, { { "keyCode", 45 }, { "modifiers", 256.5 } },
             { { "keyCode", platform::Value() }, { "modifiers", 256 } }, { { "keycode", 45 }, { "modifiers", 256 } },
             // Out of range, and yet none: the other one is not there.
             { { "keyCode", -1 } }, { { "keyCode", -1 }, { "modifiers", "x" } } })
        EXPECT_FALSE(KeyCombo::fromDictionary(dictionary)) << platform::Value(dictionary).description();
}

TEST(KeyComboDeathTest, AnIntegerThatDoesNotFitStopsTheProcess)
{
    EXPECT_DEATH((void)KeyCombo::fromDictionary({ { "keyCode", -1 }, { "modifiers", 256 } }),
        "fatal error: KeyCombo: keyCode does not fit 32 bits: -1");
    EXPECT_DEATH((void)KeyCombo::fromDictionary({ { "keyCode", 45 }, { "modifiers", 4294967296 } }),
        "modifiers does not fit 32 bits: 4294967296");
    EXPECT_DEATH((void)KeyCombo::fromDictionary({ { "keyCode", std::int64_t { 1 } << 40 }, { "modifiers", 0 } }),
        "keyCode does not fit");
    EXPECT_DEATH((void)KeyCombo::fromDictionary(
                     { { "keyCode", 0 }, { "modifiers", std::numeric_limits<std::uint64_t>::max() } }),
        "modifiers does not fit 32 bits: 18446744073709551615");
    EXPECT_DEATH((void)KeyCombo::fromDictionary({ { "keyCode", -2.0 }, { "modifiers", 0 } }), "keyCode does not fit");
}

TEST(KeyComboTest, ACodeAloneNeverBecomesAText)
{
    for (std::uint32_t const code : { 0u, 45u, 127u, largest })
        EXPECT_FALSE(KeyCombo::carbonKeyCodeToString(code));
}

TEST(KeyComboTest, AnyTwoNumbersKeepTheirStoredForm)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    for (int i = 0; i < 10000; ++i) {
        KeyCombo const combo(static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random()));
        ASSERT_EQ(KeyCombo::fromDictionary(combo.dictionary()), combo);
        ASSERT_EQ(hotkey::carbon(combo.modifiers()), combo.carbonModifiers & platform::hotKeyModifierBits);
    }
}
