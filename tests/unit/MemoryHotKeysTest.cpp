#include "backends/memory/Memory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using backends::HotKeyTable;
using platform::EventHotKeyID;

namespace {

class MemoryHotKeysTest : public testing::Test {
protected:
    MemoryHotKeysTest()
        : world(backends::MemoryPlatform::install())
        , keys(world.hotKeys())
        , listening(keys.eventDispatcherTarget().installEventHandler(
              { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed },
                  { platform::kEventClassKeyboard, platform::kEventHotKeyReleased } },
              [this](platform::CarbonEvent const* event) {
                  EventHotKeyID id;
                  event->getParameter(platform::kEventParamDirectObject, platform::typeEventHotKeyID, id);
                  heard.push_back(
                      (event->kind() == platform::kEventHotKeyPressed ? "down " : "up ") + std::to_string(id.id));
                  return platform::noErr;
              }))
    {
    }

    backends::MemoryPlatform& world;
    backends::MemoryHotKeys& keys;
    std::vector<std::string> heard;
    platform::EventTarget::HandlerRef listening;
};

} // namespace

TEST(HotKeyTableTest, TakesACombinationOnceUntilItIsRemoved)
{
    HotKeyTable table;
    EXPECT_EQ(table.add({ 45, 0x100 }, { 1, 1 }), platform::noErr);
    EXPECT_EQ(table.add({ 45, 0x100 }, { 1, 2 }), platform::eventHotKeyExistsErr);
    EXPECT_EQ(table.add({ 45, 0x300 }, { 1, 3 }), platform::noErr);
    EXPECT_EQ(table.add({ 46, 0x100 }, { 1, 4 }), platform::noErr);
    EXPECT_EQ(table.find({ 45, 0x100 }), (EventHotKeyID { 1, 1 }));
    table.remove({ 45, 0x100 });
    EXPECT_FALSE(table.find({ 45, 0x100 }));
    EXPECT_EQ(table.add({ 45, 0x100 }, { 1, 5 }), platform::noErr);
    EXPECT_EQ(table.idsByCombination().size(), 3u);
}

TEST(HotKeyTableTest, RefusesModifiersOtherThanTheFour)
{
    HotKeyTable table;
    EXPECT_EQ(table.add({ 45, 0x400 }, { 1, 1 }), platform::paramErr);
    EXPECT_EQ(table.add({ 45, 0x100 | 0x20000 }, { 1, 1 }), platform::paramErr);
    EXPECT_TRUE(table.idsByCombination().empty());
    EXPECT_EQ(table.add({ 45, 0x1B00 }, { 1, 1 }), platform::noErr);
    EXPECT_EQ(table.add({ 45, 0 }, { 1, 2 }), platform::noErr);
}

TEST_F(MemoryHotKeysTest, ReportsARegisteredCombinationOncePerPress)
{
    auto const registered = keys.registerEventHotKey(45, 0x100, { 7, 3 });
    EXPECT_EQ(registered.status, platform::noErr);
    ASSERT_TRUE(registered.reference);
    EXPECT_TRUE(keys.press(45, 0x100));
    EXPECT_FALSE(keys.press(45, 0x100)) << "it is down already";
    EXPECT_TRUE(keys.release(45, 0x100));
    EXPECT_FALSE(keys.release(45, 0x100));
    EXPECT_FALSE(keys.press(45, 0x300));
    EXPECT_TRUE(keys.press(45, 0x100));
    EXPECT_EQ(heard, (std::vector<std::string> { "down 3", "up 3", "down 3" }));
}

TEST_F(MemoryHotKeysTest, ADroppedReferenceEndsTheRegistration)
{
    auto registered = keys.registerEventHotKey(45, 256, { 7, 3 });
    EXPECT_TRUE(keys.press(45, 256));
    registered.reference.reset();
    EXPECT_FALSE(keys.release(45, 256)) << "what was down is no longer ours";
    EXPECT_FALSE(keys.press(45, 256));
    auto const again = keys.registerEventHotKey(45, 256, { 7, 4 });
    EXPECT_TRUE(keys.press(45, 256));
    EXPECT_EQ(heard, (std::vector<std::string> { "down 3", "down 4" }));
    ASSERT_EQ(world.ledger().lines().size(), 3u);
    EXPECT_EQ(world.ledger().lines()[0].text, "hotkey register code=45 modifiers=256 id=3");
    EXPECT_EQ(world.ledger().lines()[1].text, "hotkey unregister id=3");
    EXPECT_EQ(world.ledger().lines()[2].text, "hotkey register code=45 modifiers=256 id=4");
}

TEST_F(MemoryHotKeysTest, ARefusedRegistrationHasNoReference)
{
    auto const first = keys.registerEventHotKey(45, 256, { 7, 1 });
    auto const second = keys.registerEventHotKey(45, 256, { 7, 2 });
    EXPECT_EQ(second.status, platform::eventHotKeyExistsErr);
    EXPECT_FALSE(second.reference);
    auto const third = keys.registerEventHotKey(45, 0x400, { 7, 3 });
    EXPECT_EQ(third.status, platform::paramErr);
    EXPECT_FALSE(third.reference);
    EXPECT_EQ(world.ledger().lines().back().text, "hotkey register code=45 modifiers=1024 id=3 refused -50");
}

TEST_F(MemoryHotKeysTest, WhatAnotherProgramHoldsIsRegisteredAndNeverFires)
{
    keys.setHeldElsewhere(45, 256);
    auto const registered = keys.registerEventHotKey(45, 256, { 7, 1 });
    EXPECT_EQ(registered.status, platform::noErr);
    EXPECT_FALSE(keys.press(45, 256));
    EXPECT_TRUE(heard.empty());
    keys.setHeldElsewhere(45, 256, false);
    EXPECT_TRUE(keys.press(45, 256));
}

TEST_F(MemoryHotKeysTest, AWorldMayHaveNone)
{
    EXPECT_EQ(world.eventHotKeys(), &keys);
    EXPECT_TRUE(world.symbolicHotKeys());
    world.setHasHotKeys(false);
    EXPECT_FALSE(world.eventHotKeys());
    EXPECT_FALSE(world.symbolicHotKeys());
}
