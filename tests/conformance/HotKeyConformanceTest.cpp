#include "tests/support/MemoryStage.h"
#include "tests/support/X11Stage.h"

#include "platform/carbon/EventHotKeys.h"

#include <string>
#include <vector>

using platform::CarbonEvent;
using platform::cmdKey;
using platform::EventHotKeyID;
using platform::HotKeyResult;
using platform::optionKey;
using platform::shiftKey;

// What every backend owes to hot keys, on every backend.

namespace {

constexpr std::uint32_t n = 45;
constexpr std::uint32_t f5 = 96;

template<typename Stage>
class HotKeyConformance : public Stage {
protected:
    using Events = std::vector<std::string>;

    void SetUp() override
    {
        this->open();
        m_handler = service().eventDispatcherTarget().installEventHandler(
            { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed },
                { platform::kEventClassKeyboard, platform::kEventHotKeyReleased } },
            [this](CarbonEvent const* event) {
                EventHotKeyID id;
                EXPECT_EQ(event->getParameter(platform::kEventParamDirectObject, platform::typeEventHotKeyID, id),
                    platform::noErr);
                events.push_back((event->kind() == platform::kEventHotKeyPressed ? "down " : "up ")
                    + std::to_string(id.signature) + " " + std::to_string(id.id));
                return platform::noErr;
            });
        service().setTruthHandler([this] { ++changes; });
    }

    platform::EventHotKeys& service() { return *this->platform().eventHotKeys(); }
    HotKeyResult result() { return service().truth().lastRegistration; }

    platform::EventHotKeyRef registered(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id)
    {
        auto made = service().registerEventHotKey(keyCode, modifiers, { 7, id });
        EXPECT_EQ(made.status, platform::noErr);
        EXPECT_TRUE(made.reference);
        this->pumpUntil([this] { return result() != HotKeyResult::Pending; });
        return std::move(made.reference);
    }

    void strike(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        this->pressCombination(keyCode, modifiers);
        this->releaseCombination(keyCode, modifiers);
    }

    Events events;
    int changes = 0;

private:
    platform::EventTarget::HandlerRef m_handler;
};

using Stages = testing::Types<MemoryStage, X11Stage>;
TYPED_TEST_SUITE(HotKeyConformance, Stages);

} // namespace

TYPED_TEST(HotKeyConformance, ACombinationIsToldOnceDownAndOnceUpUnderItsId)
{
    auto const first = this->registered(n, cmdKey | shiftKey, 1);
    auto const second = this->registered(f5, 0, 2);
    this->strike(n, cmdKey | shiftKey);
    this->strike(f5, 0);
    EXPECT_EQ(this->events, (std::vector<std::string> { "down 7 1", "up 7 1", "down 7 2", "up 7 2" }));
}

TYPED_TEST(HotKeyConformance, OtherModifiersAreOtherCombinations)
{
    auto const key = this->registered(n, cmdKey, 1);
    this->strike(n, cmdKey | shiftKey);
    this->strike(n, optionKey);
    this->strike(n, 0);
    EXPECT_TRUE(this->events.empty());
}

TYPED_TEST(HotKeyConformance, OneProcessHasACombinationOnce)
{
    auto key = this->registered(n, cmdKey, 1);
    auto const again = this->service().registerEventHotKey(n, cmdKey, { 7, 2 });
    EXPECT_EQ(again.status, platform::eventHotKeyExistsErr);
    EXPECT_FALSE(again.reference);
    // The refused one is not there to be asked about.
    EXPECT_EQ(this->result(), HotKeyResult::Active);
    key.reset();
    auto const anew = this->registered(n, cmdKey, 3);
    this->strike(n, cmdKey);
    EXPECT_EQ(this->events, (std::vector<std::string> { "down 7 3", "up 7 3" }));
}

TYPED_TEST(HotKeyConformance, ThereAreFourModifiers)
{
    for (std::uint32_t const bit : { 0x1u, 0x400u, 0x2000u, 0x10000u })
        EXPECT_EQ(this->service().registerEventHotKey(n, cmdKey | bit, { 7, 1 }).status, platform::paramErr);
    EXPECT_EQ(this->result(), HotKeyResult::None);
}

TYPED_TEST(HotKeyConformance, ADroppedOneIsSilent)
{
    auto key = this->registered(n, cmdKey, 1);
    key.reset();
    this->settle();
    this->strike(n, cmdKey);
    EXPECT_TRUE(this->events.empty());
    EXPECT_EQ(this->result(), HotKeyResult::None);
}

TYPED_TEST(HotKeyConformance, OneThatIsDroppedWhileItIsDownSaysNothingMore)
{
    auto key = this->registered(n, cmdKey, 1);
    this->pressCombination(n, cmdKey);
    ASSERT_EQ(this->events.size(), 1u);
    key.reset();
    this->releaseCombination(n, cmdKey);
    EXPECT_EQ(this->events.size(), 1u);
}

TYPED_TEST(HotKeyConformance, WhatAnotherProgramHoldsIsRegisteredNeverFiresAndIsTold)
{
    this->holdElsewhere(n, cmdKey);
    auto const key = this->registered(n, cmdKey, 1);
    EXPECT_EQ(this->result(), HotKeyResult::HeldByAnotherClient);
    this->strike(n, cmdKey);
    EXPECT_TRUE(this->events.empty());
}

TYPED_TEST(HotKeyConformance, TheTruthIsThatOfTheLatestThatIsThere)
{
    this->holdElsewhere(n, cmdKey);
    auto const good = this->registered(f5, cmdKey, 1);
    auto bad = this->registered(n, cmdKey, 2);
    EXPECT_EQ(this->result(), HotKeyResult::HeldByAnotherClient);
    bad.reset();
    EXPECT_EQ(this->result(), HotKeyResult::Active);
}

TYPED_TEST(HotKeyConformance, AChangeOfTheTruthIsToldFromTheLoop)
{
    auto made = this->service().registerEventHotKey(n, cmdKey, { 7, 1 });
    EXPECT_EQ(this->changes, 0);
    this->pumpUntil([this] { return this->result() == HotKeyResult::Active && this->changes > 0; });
    auto const before = this->changes;
    made.reference.reset();
    EXPECT_EQ(this->changes, before);
    this->pumpUntil([&] { return this->changes > before; });
    // What has passed by then is not told: dropped and taken again, it is as it was.
    made = this->service().registerEventHotKey(n, cmdKey, { 7, 2 });
    this->pumpUntil([&] { return this->result() == HotKeyResult::Active; });
    this->settle();
}

TYPED_TEST(HotKeyConformance, AHandlerMayDropTheHotKeyThatCallsIt)
{
    auto key = this->registered(n, cmdKey, 1);
    auto const dropping = this->service().eventDispatcherTarget().installEventHandler(
        { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed } }, [&](auto const*) {
            key.reset();
            return platform::eventNotHandledErr;
        });
    this->strike(n, cmdKey);
    EXPECT_EQ(this->events, (std::vector<std::string> { "down 7 1" }));
}
