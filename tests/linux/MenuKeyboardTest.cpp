#include "tests/linux/MenuFixture.h"

namespace paneweld_tests {

using platform::NSMenu;

namespace {

constexpr xcb_keycode_t returnKey = 36, keypadEnterKey = 104, spaceKey = 65, escapeKey = 9, upKey = 111, downKey = 116;
constexpr xcb_keycode_t homeKey = 110, endKey = 115, oKey = 32, sKey = 39, nKey = 57, qKey = 24, commaKey = 59;

} // namespace

class MenuKeyboard : public MenuTest {
protected:
    MenuKeyboard() { fillMenu(); }
};

TEST_F(MenuKeyboard, ArrowsGoAroundAndOverWhatCannotBeChosen)
{
    open();
    for (auto const row : { openRow, newRow, settingsRow, updateRow, quitRow, openRow }) {
        strike({ downKey });
        EXPECT_EQ(highlightedRow(), row);
    }
    for (auto const row : { quitRow, updateRow }) {
        strike({ upKey });
        EXPECT_EQ(highlightedRow(), row);
    }
    strike({ homeKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ endKey });
    EXPECT_EQ(highlightedRow(), quitRow);
    strike({ returnKey });
    EXPECT_EQ(actions, Texts { "quit" });
    expectClosed();
}

TEST_F(MenuKeyboard, ReturnEnterAndSpaceChooseTheHighlightedRowAndNothingElse)
{
    for (auto const key : { returnKey, keypadEnterKey, spaceKey }) {
        open();
        strike({ key });
        EXPECT_TRUE(popUp->isOpen()) << "chosen without a highlighted row";
        strike({ downKey });
        strike({ downKey });
        strike({ key });
        EXPECT_FALSE(popUp->isOpen());
    }
    EXPECT_EQ(actions, (Texts { "new", "new", "new" }));
}

TEST_F(MenuKeyboard, EscapeClosesAndNobodyElseHearsOfIt)
{
    constexpr std::uint16_t escape = 53;
    int heard = 0;
    auto const monitor = monitors->addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, { escape }, [&](auto const& event) {
            ++heard;
            return std::optional(event);
        });
    open();
    strike({ downKey });
    strike({ escapeKey });
    EXPECT_EQ(actions, Texts {});
    EXPECT_EQ(heard, 0);
    expectClosed();
}

TEST_F(MenuKeyboard, FirstLettersGoToTheirRowsInTurn)
{
    add("Save", "save");
    open();
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), settingsRow);
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), offRow + 1);
    strike({ sKey });
    EXPECT_EQ(highlightedRow(), settingsRow);
    // Only one, and it is not chosen by that. The other one with this letter is off.
    strike({ oKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ oKey });
    EXPECT_EQ(highlightedRow(), openRow);
    strike({ commaKey });
    EXPECT_EQ(highlightedRow(), openRow);
    EXPECT_EQ(actions, Texts {});
}

TEST_F(MenuKeyboard, ShortcutsChooseWithTheirModifierAndWithAnyLocks)
{
    for (auto const& locks : { std::vector<xcb_keycode_t> {}, { numLockKey }, { capsLockKey }, { numLockKey } }) {
        for (auto const lock : locks)
            strike({ lock });
        open();
        strike({ leftSuperKey, qKey });
        strike({ leftControlKey, leftShiftKey, qKey });
        EXPECT_TRUE(popUp->isOpen());
        strike({ leftControlKey, qKey });
        EXPECT_FALSE(popUp->isOpen());
        open();
        strike({ leftControlKey, commaKey });
        EXPECT_FALSE(popUp->isOpen());
        // The keyboard of the next round starts with the arrows.
        open();
        strike({ downKey });
        strike({ nKey });
        EXPECT_EQ(highlightedRow(), newRow);
        popUp->close();
    }
    Texts expected;
    for (int i = 0; i < 4; ++i)
        expected.insert(expected.end(), { "quit", "settings" });
    EXPECT_EQ(actions, expected);
}

TEST_F(MenuKeyboard, TheShortcutOfADisabledRowDoesNothing)
{
    open();
    strike({ leftControlKey, oKey });
    EXPECT_TRUE(popUp->isOpen());
    EXPECT_EQ(actions, Texts {});
}

TEST_F(MenuKeyboard, AnItemWithAMenuOfItsOwnCannotBeChosen)
{
    auto const more = add("More", "more");
    more->setSubmenu(std::make_shared<NSMenu>());
    open();
    clickRow(offRow + 1);
    EXPECT_TRUE(popUp->isOpen());
    strike({ endKey });
    EXPECT_EQ(highlightedRow(), quitRow);
    EXPECT_EQ(actions, Texts {});
}

TEST_F(MenuKeyboard, MoreRowsThanTheScreenHasRoomForAreThere)
{
    for (int i = 0; i < 200; ++i)
        add("Row " + std::to_string(i), "row " + std::to_string(i));
    add(std::string(5000, 'w'), "wide");
    open();
    EXPECT_EQ(place(), (Geometry { 0, 0, 1280, 800 }));
    strike({ upKey });
    strike({ returnKey });
    EXPECT_EQ(actions, Texts { "wide" });
}

} // namespace paneweld_tests
