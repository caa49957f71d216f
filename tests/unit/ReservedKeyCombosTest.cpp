#include "backends/memory/Memory.h"
#include "hotkey/KeyCombo.h"
#include "platform/appkit/NSMenu.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

using hotkey::Key;
using hotkey::KeyCombo;
using platform::Dictionary;
using platform::NSEventModifierFlags;
using platform::NSMenu;
using platform::Value;

namespace {

class ReservedKeyCombos : public testing::Test {
protected:
    ReservedKeyCombos()
        : world(backends::MemoryPlatform::install())
    {
    }

    static Dictionary shortcut(Value enabled, Value code, Value modifiers)
    {
        return { { "kHISymbolicHotKeyEnabled", std::move(enabled) }, { "kHISymbolicHotKeyCode", std::move(code) },
            { "kHISymbolicHotKeyModifiers", std::move(modifiers) } };
    }

    std::vector<KeyCombo> systemCombos(platform::List array)
    {
        world.symbolicHotKeys()->setAnswer({ platform::noErr, std::move(array) });
        return KeyCombo::systemKeyCombos(world);
    }

    backends::MemoryPlatform& world;
};

// A line of a menu, written down.
struct Line {
    std::string title;
    std::string keyEquivalent;
    NSEventModifierFlags mask = NSEventModifierFlags::command;
    std::shared_ptr<NSMenu> submenu {};
};

std::shared_ptr<NSMenu> menuOf(std::vector<Line> const& lines)
{
    auto menu = std::make_shared<NSMenu>();
    for (auto const& line : lines) {
        auto const item = platform::NSMenuItem::create(line.title, {}, line.keyEquivalent);
        item->setKeyEquivalentModifierMask(line.mask);
        item->setSubmenu(line.submenu);
        menu->addItem(item);
    }
    return menu;
}

std::vector<KeyCombo> combosOf(std::vector<Line> const& lines) { return KeyCombo::keyCombos(*menuOf(lines)); }

} // namespace

TEST_F(ReservedKeyCombos, OfTheSystemAreTheEnabledOnesInOrderAndAsTheyStand)
{
    EXPECT_EQ(systemCombos({
                  shortcut(true, 49, 0x100),
                  shortcut(false, 50, 0x100),
                  shortcut(true, 65535, 0x20000),
                  shortcut(1, 49u, 256.0),
                  shortcut(2, -1, 4294967298),
                  shortcut(0.5, std::numeric_limits<std::uint64_t>::max(), 256.5),
                  shortcut(0, 51, 0),
                  shortcut(0.0, 52, 0),
              }),
        (std::vector<KeyCombo> {
            { 49, 0x100 }, { 65535, 0x20000 }, { 49, 0x100 }, { 0xFFFFFFFF, 2 }, { 0xFFFFFFFF, 256 } }));
}

TEST_F(ReservedKeyCombos, OfTheSystemLeaveOutWhatIsMalformed)
{
    auto withoutEnabled = shortcut(true, 49, 0x100);
    withoutEnabled.erase("kHISymbolicHotKeyEnabled");
    auto withoutCode = shortcut(true, 49, 0x100);
    withoutCode.erase("kHISymbolicHotKeyCode");
    auto withoutModifiers = shortcut(true, 49, 0x100);
    withoutModifiers.erase("kHISymbolicHotKeyModifiers");
    EXPECT_EQ(systemCombos({
                  withoutEnabled,
                  withoutCode,
                  withoutModifiers,
                  shortcut("1", 49, 0x100),
                  shortcut(true, "49", 0x100),
                  shortcut(true, 49, Value()),
                  shortcut(true, std::numeric_limits<double>::infinity(), 0),
                  "no dictionary",
                  shortcut(true, 12, 0x900),
              }),
        (std::vector<KeyCombo> { { 12, 0x900 } }));
}

TEST_F(ReservedKeyCombos, OfTheSystemAreNoneWhenItDoesNotAnswer)
{
    EXPECT_TRUE(KeyCombo::systemKeyCombos(world).empty());
    world.symbolicHotKeys()->setAnswer({ platform::unimpErr, platform::List { shortcut(true, 49, 0x100) } });
    EXPECT_TRUE(KeyCombo::systemKeyCombos(world).empty());
    world.symbolicHotKeys()->setAnswer({ platform::noErr, std::nullopt });
    EXPECT_TRUE(KeyCombo::systemKeyCombos(world).empty());
    world.symbolicHotKeys()->setAnswer({ platform::noErr, platform::List { shortcut(true, 49, 0x100) } });
    EXPECT_EQ(KeyCombo::systemKeyCombos(world).size(), 1u);
    world.setHasHotKeys(false);
    EXPECT_TRUE(KeyCombo::systemKeyCombos(world).empty());
}

TEST_F(ReservedKeyCombos, OfTheSystemMayBeAskedOnAnyThread)
{
    std::size_t count = 0;
    world.symbolicHotKeys()->setAnswer({ platform::noErr, platform::List { shortcut(true, 49, 0x100) } });
    std::thread([&] { count = KeyCombo::systemKeyCombos(world).size(); }).join();
    EXPECT_EQ(count, 1u);
}

TEST_F(ReservedKeyCombos, OfAMenuAreItsKeyEquivalents)
{
    using Flags = NSEventModifierFlags;
    EXPECT_EQ(combosOf({
                  { "New", "n" },
                  { "Find", "f", Flags::option | Flags::command },
                  { "Back", "[" },
                  { "Delete", "\u232B", Flags {} },
                  { "Everything", "x", { 0xFFFFFFFFFFFFFFFF } },
                  { "Again", "n" },
              }),
        (std::vector<KeyCombo> {
            { 45, 0x100 }, { 3, 0x900 }, { 33, 0x100 }, { 51, 0 }, { 7, 0x1B00 }, { 45, 0x100 } }));
}

TEST_F(ReservedKeyCombos, OfAMenuAddNoShiftForACapitalLetter)
{
    auto const combos = combosOf({ { "New", "N" } });
    ASSERT_EQ(combos.size(), 1u);
    EXPECT_EQ(combos[0].key(), Key::n);
    EXPECT_EQ(combos[0].modifiers(), NSEventModifierFlags::command);
}

TEST_F(ReservedKeyCombos, OfAMenuLeaveOutItemsWithoutAKnownKey)
{
    EXPECT_TRUE(combosOf({ { "About", "" }, { "Odd", "\u00E4" }, { "Arrow", "\uF700" } }).empty());
    EXPECT_TRUE(combosOf({}).empty());
}

TEST_F(ReservedKeyCombos, OfAMenuTakeInSubmenusRightAfterTheirItem)
{
    Line const file { "File", "", NSEventModifierFlags::command, menuOf({ { "Save", "s" } }) };
    EXPECT_EQ(combosOf({ file }), (std::vector<KeyCombo> { { Key::s, NSEventModifierFlags::command } }));

    Line const deep { "Open Recent", "r", NSEventModifierFlags::command, menuOf({ { "Clear", "k" }, file }) };
    std::string shown;
    for (auto const& combo : combosOf({ { "New", "n" }, deep, { "Quit", "q" } }))
        shown += combo.description() + " ";
    EXPECT_EQ(shown, "⌘N ⌘R ⌘K ⌘S ⌘Q ");
}

TEST_F(ReservedKeyCombos, OfTheMainMenuAreNoneUntilTheAppHasToldOfIt)
{
    EXPECT_TRUE(KeyCombo::mainMenuKeyCombos(world).empty());
    world.application().setMainMenu(menuOf({ { "Quit", "q" } }));
    EXPECT_EQ(KeyCombo::mainMenuKeyCombos(world), (std::vector<KeyCombo> { { 12, 0x100 } }));
    world.application().setMainMenu(nullptr);
    EXPECT_TRUE(KeyCombo::mainMenuKeyCombos(world).empty());
}

TEST_F(ReservedKeyCombos, OfMenusAreForTheMainThread)
{
    EXPECT_DEATH(std::thread([&] { (void)KeyCombo::mainMenuKeyCombos(world); }).join(), "not on the main thread");
    EXPECT_DEATH(std::thread([] { (void)KeyCombo::keyCombos(NSMenu {}); }).join(), "not on the main thread");
}

TEST_F(ReservedKeyCombos, OfUsualCommandsAreFortySix)
{
    std::string shown;
    for (auto const& combo : KeyCombo::standardKeyCombos())
        shown += combo.description() + " ";
    EXPECT_EQ(shown,
        "⌘, ⌘H ⌥⌘H ⌘Q ⌘N ⌘O ⌘W ⌘S ⇧⌘S ⌘R ⇧⌘P ⌘P ⌘Z ⇧⌘Z ⌘X ⌘C ⌘V ⌥⇧⌘V ⌘A ⌘F ⌥⌘F ⌘G ⇧⌘G ⌘E ⌘J ⇧⌘; ⌘; ⌘T ⌘B ⌘I ⌘U ⇧⌘= "
        "⌘- ⇧⌘C ⌥⌘C ⌥⌘V ⇧⌘[ ⇧⌘\\ ⇧⌘] ⌃⌘C ⌃⌘V ⌥⌘T ⌃⌘S ⌃⌘F ⌘M ⇧⌘/ ");
    EXPECT_EQ(KeyCombo::standardKeyCombos().size(), 46u);
    // Not the keypad's keys, which look the same.
    EXPECT_EQ(KeyCombo::standardKeyCombos()[31], KeyCombo(24, 0x300));
    EXPECT_EQ(KeyCombo::standardKeyCombos()[32], KeyCombo(27, 0x100));
    EXPECT_EQ(KeyCombo::standardKeyCombos()[45], KeyCombo(44, 0x300));
}

TEST_F(ReservedKeyCombos, OfUsualCommandsStayTheSame)
{
    auto const before = KeyCombo::standardKeyCombos();
    world.application().setMainMenu(menuOf({ { "Odd", "9" } }));
    EXPECT_FALSE(systemCombos({ shortcut(true, 49, 0x100) }).empty());
    EXPECT_EQ(KeyCombo::standardKeyCombos(), before);
}
