#include "backends/linux/x11/MenuKeys.h"
#include "backends/linux/x11/MenuLayout.h"
#include "backends/linux/x11/MenuPress.h"
#include "backends/linux/x11/MenuTheme.h"
#include "backends/linux/x11/PixelFormat.h"

#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::KeyboardMap;
using backends::MenuKey;
using backends::MenuKeyPress;
using backends::MenuLayout;
using backends::MenuMetrics;
using backends::MenuPress;
using backends::MenuTheme;
using backends::PixelFormat;
using backends::PixelRect;
using platform::NSEventModifierFlags;
using platform::NSMenuItem;
using Meaning = MenuPress::Meaning;
using Place = MenuPress::Place;
using Row = MenuLayout::Row;

namespace {

constexpr PixelRect monitor { 100, 50, 800, 600 };
constexpr MenuMetrics metrics { .border = 1, .margin = 4, .rowHeight = 20, .separatorHeight = 9, .rowWidth = 150 };

MenuLayout layoutOf(std::vector<Row> rows) { return MenuLayout(std::move(rows), metrics, monitor); }

// Two keys of letters, a comma, a keypad, with the usual modifiers: Control, Mod1 (Alt), Mod2 (Num Lock), Mod4 (Super).
KeyboardMap keyboard()
{
    KeyboardMap map;
    map.firstKeycode = 10;
    map.symbolsPerKey = 4;
    // q and Cyrillic short i, comma, 7 and slash, keypad's 8, Control, Alt, Num Lock, Super, Return.
    map.symbols = { 'q', 'Q', 0x6CA, 0x6EA, ',', '<', 0, 0, '7', '/', 0, 0, 0xFF97, 0xFFB8, 0, 0, 0xFFE3, 0, 0, 0,
        0xFFE9, 0, 0, 0, 0xFF7F, 0, 0, 0, 0xFFEB, 0, 0, 0, 0xFF0D, 0, 0, 0 };
    map.keysPerModifier = 1;
    map.modifierKeys = { 0, 0, 14, 15, 16, 0, 17, 0 };
    return map;
}
constexpr xcb_keycode_t qKey = 10, commaKey = 11, sevenKey = 12, keypadEightKey = 13, returnKey = 18;
constexpr std::uint16_t secondLayout = 1 << 13;

} // namespace

TEST(MenuLayout, PutsRowsBelowEachOtherInsideItsBorder)
{
    auto const layout = layoutOf({ Row::Enabled, Row::Separator, Row::Disabled });
    EXPECT_EQ(layout.width(), 152);
    EXPECT_EQ(layout.height(), 5 + 20 + 9 + 20 + 5);
    EXPECT_EQ(layout.rowRect(0), (PixelRect { 1, 5, 150, 20 }));
    EXPECT_EQ(layout.rowRect(1), (PixelRect { 1, 25, 150, 9 }));
    EXPECT_EQ(layout.rowRect(2), (PixelRect { 1, 34, 150, 20 }));
    EXPECT_EQ(layout.rowAt(1, 5), 0u);
    EXPECT_EQ(layout.rowAt(150, 24), 0u);
    EXPECT_EQ(layout.rowAt(75, 33), 1u);
    EXPECT_EQ(layout.rowAt(75, 53), 2u);
    for (auto const& [x, y] : { std::pair { 0, 10 }, { 151, 10 }, { 75, 4 }, { 75, 54 }, { -5, 10 }, { 75, -1 } })
        EXPECT_FALSE(layout.rowAt(x, y)) << x << " " << y;
}

TEST(MenuLayout, StepsOverWhatCannotBeChosenAndAroundTheEnds)
{
    auto const layout = layoutOf({ Row::Separator, Row::Enabled, Row::Disabled, Row::Separator, Row::Enabled });
    EXPECT_EQ(layout.first(), 1u);
    EXPECT_EQ(layout.last(), 4u);
    EXPECT_EQ(layout.next(1), 4u);
    EXPECT_EQ(layout.next(4), 1u);
    EXPECT_EQ(layout.previous(1), 4u);
    EXPECT_EQ(layout.previous(4), 1u);
    EXPECT_EQ(layout.next({}), 1u);
    EXPECT_EQ(layout.previous({}), 4u);
    for (auto const& rows : { std::vector<Row> {}, { Row::Separator }, { Row::Disabled, Row::Separator } }) {
        EXPECT_FALSE(layoutOf(rows).first());
        EXPECT_FALSE(layoutOf(rows).last());
    }
    EXPECT_EQ(layoutOf({ Row::Enabled }).next(0), 0u);
}

TEST(MenuLayout, OpensBelowElseAboveElseBesideAndNeverBeyondTheMonitor)
{
    auto const layout = layoutOf({ Row::Enabled, Row::Enabled });
    ASSERT_EQ(layout.height(), 50);
    EXPECT_EQ(layout.beside({ 300, 60, 24, 24 }, monitor), (PixelRect { 300, 84, 152, 50 }));
    // To the last pixel, and one more.
    EXPECT_EQ(layout.beside({ 300, 576, 24, 24 }, monitor), (PixelRect { 300, 600, 152, 50 }));
    EXPECT_EQ(layout.beside({ 300, 577, 24, 24 }, monitor), (PixelRect { 300, 527, 152, 50 }));
    EXPECT_EQ(layout.beside({ 880, 60, 24, 24 }, monitor).right(), monitor.right());
    EXPECT_EQ(layout.beside({ 90, 60, 24, 24 }, monitor).x, monitor.x);
    // An icon as high as its monitor.
    EXPECT_EQ(layout.beside({ 100, 50, 24, 600 }, monitor), (PixelRect { 124, 600, 152, 50 }));
    EXPECT_EQ(layout.beside({ 876, 50, 24, 600 }, monitor), (PixelRect { 724, 600, 152, 50 }));
    // An icon that is not on the monitor at all.
    EXPECT_EQ(layout.beside({ 2000, 2000, 24, 24 }, monitor).bottom(), monitor.bottom());
}

TEST(MenuLayout, IsNeverLargerThanTheMonitor)
{
    auto const tall = layoutOf(std::vector<Row>(100, Row::Enabled));
    EXPECT_EQ(tall.height(), monitor.height);
    EXPECT_EQ(tall.beside({ 300, 60, 24, 24 }, monitor).y, monitor.y);
    EXPECT_EQ(tall.last(), 99u);
    EXPECT_FALSE(tall.rowAt(75, 700));
    MenuLayout const wide({ Row::Enabled }, { .rowHeight = 20, .rowWidth = 5000 }, monitor);
    EXPECT_EQ(wide.width(), monitor.width);
    EXPECT_EQ(wide.rowRect(0).right(), monitor.width - 1);
    MenuLayout const nothing({}, {}, {});
    EXPECT_EQ(nothing.width(), 1);
    EXPECT_GE(nothing.height(), 1);
}

TEST(MenuPress, AClickThatOpenedTheMenuLeavesItOpen)
{
    for (auto const place : { Place::Anchor, Place::Outside, Place::Menu, Place::Row }) {
        MenuPress press;
        press.begin(true, 500, 10);
        EXPECT_EQ(press.released(place, 503, 8, 5), Meaning::Nothing);
        // Only once.
        EXPECT_EQ(press.pressed(Place::Row), Meaning::Nothing);
        EXPECT_EQ(press.released(Place::Row, 503, 8, 5), Meaning::Choose);
    }
}

TEST(MenuPress, APressThatIsHeldChoosesWhereItEnds)
{
    auto const afterDragTo = [](Place place) {
        MenuPress press;
        press.begin(true, 500, 10);
        return press.released(place, 520, 60, 5);
    };
    EXPECT_EQ(afterDragTo(Place::Row), Meaning::Choose);
    EXPECT_EQ(afterDragTo(Place::Menu), Meaning::Nothing);
    EXPECT_EQ(afterDragTo(Place::Anchor), Meaning::Nothing);
    EXPECT_EQ(afterDragTo(Place::Outside), Meaning::Close);
}

TEST(MenuPress, ALaterPressElsewhereCloses)
{
    MenuPress press;
    press.begin(false, 500, 10);
    EXPECT_EQ(press.pressed(Place::Row), Meaning::Nothing);
    EXPECT_EQ(press.released(Place::Outside, 500, 10, 5), Meaning::Close);
    EXPECT_EQ(press.pressed(Place::Menu), Meaning::Nothing);
    EXPECT_EQ(press.pressed(Place::Outside), Meaning::Close);
    EXPECT_EQ(press.pressed(Place::Anchor), Meaning::Close);
}

TEST(MenuKeys, ShortcutsAreWrittenWithTheNamesOfTheKeys)
{
    auto const item = NSMenuItem::create("Quit", "", "q");
    EXPECT_EQ(backends::shortcutText(*item), "Ctrl+Q");
    item->setKeyEquivalentModifierMask(NSEventModifierFlags::command | NSEventModifierFlags::option
        | NSEventModifierFlags::control | NSEventModifierFlags::shift);
    EXPECT_EQ(backends::shortcutText(*item), "Ctrl+Alt+Shift+Super+Q");
    item->setKeyEquivalentModifierMask({});
    EXPECT_EQ(backends::shortcutText(*item), "Q");
    EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", ",")), "Ctrl+,");
    EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", "ö")), "Ctrl+Ö");
    EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", "Q")), "Ctrl+Shift+Q");
    EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", "\r")), "Ctrl+Return");
    EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", " ")), "Ctrl+Space");
    for (auto const* const none : { "", "\x01", "\xFF" })
        EXPECT_EQ(backends::shortcutText(*NSMenuItem::create("", "", none)), "");
}

TEST(MenuKeys, AShortcutNeedsExactlyItsModifiersAndNoLocks)
{
    auto const map = keyboard();
    auto const item = NSMenuItem::create("Quit", "", "q");
    auto const isChosen = [&](xcb_keycode_t key, unsigned state) {
        return backends::isShortcut(*item, { map, key, static_cast<std::uint16_t>(state) });
    };
    EXPECT_TRUE(isChosen(qKey, XCB_MOD_MASK_CONTROL));
    EXPECT_TRUE(isChosen(qKey, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
    // Where another layout writes another letter, the first one still tells the place.
    EXPECT_TRUE(isChosen(qKey, XCB_MOD_MASK_CONTROL | secondLayout));
    EXPECT_FALSE(isChosen(qKey, 0));
    EXPECT_FALSE(isChosen(qKey, XCB_MOD_MASK_4));
    EXPECT_FALSE(isChosen(qKey, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1));
    EXPECT_FALSE(isChosen(qKey, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT));
    EXPECT_FALSE(isChosen(commaKey, XCB_MOD_MASK_CONTROL));
    EXPECT_FALSE(isChosen(200, XCB_MOD_MASK_CONTROL));
    // This layout writes it with Shift.
    auto const slash = NSMenuItem::create("", "", "/");
    auto const isSlash = [&](unsigned state) {
        return backends::isShortcut(*slash, { map, sevenKey, static_cast<std::uint16_t>(state) });
    };
    EXPECT_TRUE(isSlash(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT));
    EXPECT_FALSE(isSlash(XCB_MOD_MASK_CONTROL));
    // No key of a plain keyboard is Super.
    auto plain = map;
    plain.modifierKeys[6] = 0;
    item->setKeyEquivalentModifierMask(NSEventModifierFlags::control);
    EXPECT_TRUE(isChosen(qKey, XCB_MOD_MASK_4));
    for (int const state : { 0, int { XCB_MOD_MASK_CONTROL }, int { XCB_MOD_MASK_4 } })
        EXPECT_FALSE(backends::isShortcut(*item, MenuKeyPress { plain, qKey, static_cast<std::uint16_t>(state) }))
            << state;
}

TEST(MenuKeys, TheKeypadMovesWhateverNumLockSays)
{
    auto const map = keyboard();
    for (unsigned const state : { 0u, unsigned { XCB_MOD_MASK_2 }, unsigned { XCB_MOD_MASK_LOCK } })
        EXPECT_EQ(backends::menuKey({ map, keypadEightKey, static_cast<std::uint16_t>(state) }), MenuKey::Up);
    EXPECT_EQ(backends::menuKey({ map, returnKey, 0 }), MenuKey::Choose);
    EXPECT_FALSE(backends::menuKey({ map, qKey, 0 }));
}

TEST(MenuKeys, InitialsAreTheSameInBothCases)
{
    auto const map = keyboard();
    for (auto const state : std::initializer_list<std::uint16_t> { 0, 1, 2 }) {
        EXPECT_TRUE(backends::isInitial("Quit", { map, qKey, state }));
        EXPECT_TRUE(backends::isInitial("quit", { map, qKey, state }));
        EXPECT_FALSE(backends::isInitial("Open", { map, qKey, state }));
    }
    EXPECT_TRUE(backends::isInitial("Йод", { map, qKey, secondLayout }));
    EXPECT_FALSE(backends::isInitial("Quit", { map, qKey, XCB_MOD_MASK_CONTROL }));
    EXPECT_FALSE(backends::isInitial("", { map, qKey, 0 }));
}

TEST(MenuTheme, IsDarkWhenItsNameSaysSo)
{
    auto const light = MenuTheme::named("", "");
    EXPECT_EQ(light.font, "Sans 10");
    EXPECT_GT(light.background.green, 0.9);
    for (auto const* const name : { "Adwaita-dark", "Breeze-Dark", "HighContrastInverse" })
        EXPECT_LT(MenuTheme::named(name, "").background.green, 0.3) << name;
    for (auto const* const name : { "Adwaita", "Breeze", "Greybird" })
        EXPECT_EQ(MenuTheme::named(name, "").background, light.background) << name;
    EXPECT_EQ(MenuTheme::named("", "Cantarell Bold 11").font, "Cantarell Bold 11");
}

TEST(PixelFormat, WritesPixelsAsTheScreenWantsThem)
{
    std::uint32_t const pixels[] { 0, 0x112233, 0xFFFFFF, 0, 0, 0x804020, 0, 0 };
    backends::PixelView const picture { pixels, 4 };
    using Bytes = std::vector<std::uint8_t>;
    PixelFormat format;
    EXPECT_EQ(format.encoded(picture, { 1, 0, 2, 1 }), (Bytes { 0x33, 0x22, 0x11, 0, 0xFF, 0xFF, 0xFF, 0 }));
    EXPECT_EQ(format.encoded(picture, { 1, 0, 1, 2 }), (Bytes { 0x33, 0x22, 0x11, 0, 0x20, 0x40, 0x80, 0 }));
    format.isBigEndian = true;
    EXPECT_EQ(format.encoded(picture, { 1, 0, 1, 1 }), (Bytes { 0, 0x11, 0x22, 0x33 }));
    // Red and blue changed over, three bytes, lines of whole words.
    format = { 0xFF, 0xFF00, 0xFF0000, 3, 4, false };
    EXPECT_EQ(format.encoded(picture, { 1, 0, 1, 1 }), (Bytes { 0x11, 0x22, 0x33, 0 }));
    // Five, six and five bits; and ten each.
    format = { 0xF800, 0x7E0, 0x1F, 2, 4, false };
    EXPECT_EQ(format.encoded(picture, { 2, 0, 1, 1 }), (Bytes { 0xFF, 0xFF, 0, 0 }));
    EXPECT_EQ(format.encoded(picture, { 1, 1, 1, 1 }), (Bytes { 0x04, 0x82, 0, 0 }));
    format = { 0x3FF00000, 0xFFC00, 0x3FF, 4, 4, false };
    EXPECT_EQ(format.encoded(picture, { 2, 0, 1, 1 }), (Bytes { 0xFF, 0xFF, 0xFF, 0x3F }));
}

} // namespace paneweld_tests
