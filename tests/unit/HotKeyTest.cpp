#include "tests/support/HotKeyWorld.h"

using hotkey::HotKey;
using hotkey::HotKeysController;
using hotkey::Key;
using hotkey::KeyCombo;
using platform::eventNotHandledErr;
using platform::NSEventModifierFlags;

namespace {

class HotKeyTest : public HotKeyWorld { };

} // namespace

TEST_F(HotKeyTest, IsRegisteredFromItsCreationToItsEnd)
{
    auto hotKey = make();
    EXPECT_FALSE(hotKey->isPaused());
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    auto const& box = HotKeysController::boxesByNumber().at(1);
    EXPECT_EQ(box.identifier, hotKey->identifier());
    EXPECT_EQ(box.hotKey.lock(), hotKey);
    EXPECT_TRUE(box.carbonEventHotKey);
    EXPECT_EQ(hotKey.use_count(), 1) << "the table must not keep it alive";

    hotKey.reset();
    EXPECT_EQ(numbers(), (Numbers {}));
    EXPECT_EQ(ledger(), (Words { "hotkey register code=45 modifiers=256 id=1", "hotkey unregister id=1" }));
}

TEST_F(HotKeyTest, IsMadeFromACombinationItsNumbersOrItsKey)
{
    auto const first = HotKey::create(world, KeyCombo(45, 0x100), saying("first"));
    auto const second = HotKey::create(world, 45, 0x300, saying("second"), saying("up"));
    auto const third = HotKey::create(world, Key::space, NSEventModifierFlags::option | NSEventModifierFlags::control);
    EXPECT_EQ(first->keyCombo(), KeyCombo(45, 0x100));
    EXPECT_EQ(second->keyCombo(), KeyCombo(45, 0x300));
    EXPECT_EQ(third->keyCombo(), KeyCombo(49, 0x1800));
    EXPECT_TRUE(first->keyDownHandler());
    EXPECT_FALSE(first->keyUpHandler());
    EXPECT_TRUE(second->keyUpHandler());
    EXPECT_FALSE(third->keyDownHandler() || third->keyUpHandler());
    EXPECT_NE(first->identifier(), second->identifier());
    EXPECT_EQ(numbers(), (Numbers { 1, 2, 3 }));
}

TEST_F(HotKeyTest, CallsItsHandlersInsideTheDispatch)
{
    auto const hotKey = make();
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(heard, (Words { "down" }));
    EXPECT_TRUE(world.hotKeys().release(45, 0x100));
    EXPECT_EQ(heard, (Words { "down", "up" }));
    EXPECT_FALSE(world.hotKeys().press(45, 0x300));
    EXPECT_EQ(heard.size(), 2u);
}

TEST_F(HotKeyTest, HandlersMayBeReplacedAtAnyTime)
{
    auto const hotKey = make();
    hotKey->setKeyDownHandler(saying("other"));
    world.hotKeys().press(45, 0x100);
    hotKey->setKeyUpHandler({});
    EXPECT_EQ(send(event(6, 1)), eventNotHandledErr);
    // From inside the handler too, which then still runs to its end.
    hotKey->setKeyDownHandler([&, word = std::string("a word that lives in the handler")] {
        hotKey->setKeyDownHandler({});
        heard.push_back(word);
    });
    EXPECT_EQ(send(event(5, 1)), platform::noErr);
    EXPECT_EQ(send(event(5, 1)), eventNotHandledErr);
    EXPECT_EQ(heard, (Words { "other", "a word that lives in the handler" }));
}

TEST_F(HotKeyTest, PausingUnregistersAndGoingOnTakesALargerNumber)
{
    auto const other = make(46);
    auto const hotKey = make();
    EXPECT_EQ(numbers(), (Numbers { 1, 2 }));
    hotKey->setPaused(true);
    EXPECT_TRUE(hotKey->isPaused());
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    EXPECT_FALSE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(send(event(5, 2)), eventNotHandledErr);
    EXPECT_TRUE(hotKey->keyDownHandler());

    hotKey->setPaused(false);
    EXPECT_FALSE(hotKey->isPaused());
    EXPECT_EQ(numbers(), (Numbers { 1, 3 }));
    EXPECT_EQ(send(event(5, 2)), eventNotHandledErr) << "an old number is nobody's";
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(heard, (Words { "down" }));
}

TEST_F(HotKeyTest, PausingTwiceOrGoingOnWhenNotPausedChangesNothing)
{
    auto const hotKey = make();
    hotKey->setPaused(false);
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    hotKey->setPaused(true);
    hotKey->setPaused(true);
    EXPECT_EQ(numbers(), (Numbers {}));
    hotKey->setPaused(false);
    hotKey->setPaused(false);
    EXPECT_EQ(numbers(), (Numbers { 2 }));
    EXPECT_EQ(HotKeysController::registrationCount(), 2u);
    EXPECT_EQ(ledger(),
        (Words { "hotkey register code=45 modifiers=256 id=1", "hotkey unregister id=1",
            "hotkey register code=45 modifiers=256 id=2" }));
}

TEST_F(HotKeyTest, APausedOneLeavesSilently)
{
    auto hotKey = make();
    hotKey->setPaused(true);
    world.ledger().clear();
    hotKey.reset();
    EXPECT_TRUE(ledger().empty());
}

TEST_F(HotKeyTest, HandlersAreReleasedAfterTheRegistrationHasEnded)
{
    struct Witness {
        bool* sawTable = nullptr;
        ~Witness() { *sawTable = HotKeysController::boxesByNumber().empty(); }
    };
    bool sawEmptyTable = false;
    auto witness = std::make_shared<Witness>();
    witness->sawTable = &sawEmptyTable;
    auto hotKey = HotKey::create(world, 45, 0x100, [witness] {});
    witness.reset();
    EXPECT_FALSE(sawEmptyTable);
    hotKey.reset();
    EXPECT_TRUE(sawEmptyTable);
}

TEST_F(HotKeyTest, ASecondOneOfTheSameCombinationIsRefusedInSilence)
{
    auto first = make();
    auto const second = HotKey::create(world, 45, 0x100, saying("second"));
    EXPECT_EQ(numbers(), (Numbers { 1, 2 }));
    EXPECT_FALSE(HotKeysController::boxesByNumber().at(2).carbonEventHotKey);
    EXPECT_TRUE(world.logRecords().empty());
    world.hotKeys().press(45, 0x100);
    EXPECT_EQ(heard, (Words { "down" }));

    // It is not asked for again by itself, but going on does.
    first.reset();
    EXPECT_FALSE(world.hotKeys().press(45, 0x100));
    second->setPaused(true);
    second->setPaused(false);
    EXPECT_EQ(numbers(), (Numbers { 3 }));
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(heard, (Words { "down", "second" }));
}

TEST_F(HotKeyTest, ARefusedOneLeavesTheOtherAlone)
{
    auto const first = make();
    auto second = make();
    second.reset();
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    EXPECT_EQ(ledger().back(), "hotkey register code=45 modifiers=256 id=2 refused -9878");
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
}

TEST_F(HotKeyTest, ModifiersThatNoHotKeyCanHaveAreRefusedInSilence)
{
    auto hotKey = make(45, 0x400);
    EXPECT_EQ(hotKey->keyCombo(), KeyCombo(45, 0x400));
    EXPECT_FALSE(HotKeysController::boxesByNumber().at(1).carbonEventHotKey);
    hotKey.reset();
    EXPECT_EQ(numbers(), (Numbers {}));
}

TEST_F(HotKeyTest, AWorldWithoutTheServiceIsLikeARefusal)
{
    world.setHasHotKeys(false);
    auto hotKey = make();
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    EXPECT_FALSE(HotKeysController::boxesByNumber().at(1).carbonEventHotKey);
    EXPECT_TRUE(world.logRecords().empty());
    hotKey->setPaused(true);
    EXPECT_EQ(numbers(), (Numbers {}));
    world.setHasHotKeys(true);
    hotKey->setPaused(false);
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
}

TEST_F(HotKeyTest, WhatAnotherProgramHoldsNeverFires)
{
    world.hotKeys().setHeldElsewhere(45, 0x100);
    auto const hotKey = make();
    EXPECT_TRUE(HotKeysController::boxesByNumber().at(1).carbonEventHotKey);
    EXPECT_FALSE(world.hotKeys().press(45, 0x100));
    EXPECT_TRUE(heard.empty());
}

TEST_F(HotKeyTest, AHandlerMayDropTheLastReference)
{
    std::shared_ptr<HotKey> hotKey;
    hotKey = HotKey::create(world, 45, 0x100, [&, word = std::string("dropped by its own handler")] {
        hotKey.reset();
        EXPECT_EQ(numbers(), (Numbers { 1 })) << "it lives until its handler returns";
        heard.push_back(word);
    });
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(heard, (Words { "dropped by its own handler" }));
    EXPECT_EQ(numbers(), (Numbers {}));
    EXPECT_FALSE(world.hotKeys().release(45, 0x100));
}

TEST_F(HotKeyTest, AHandlerMayPauseItsHotKeyAndMakeAnother)
{
    std::shared_ptr<HotKey> second;
    auto const first = make();
    first->setKeyDownHandler([&] {
        first->setPaused(true);
        second = make();
    });
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(numbers(), (Numbers { 2 }));
    EXPECT_TRUE(world.hotKeys().press(45, 0x100));
    EXPECT_EQ(heard, (Words { "down" }));
}
