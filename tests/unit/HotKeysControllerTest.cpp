#include "tests/support/HotKeyWorld.h"
#include "tests/support/RunOptions.h"

#include <random>
#include <set>
#include <thread>

using hotkey::HotKey;
using hotkey::HotKeysController;
using platform::CarbonEvent;
using platform::eventNotHandledErr;
using platform::OSStatus;

namespace {

class HotKeysControllerTest : public HotKeyWorld { };

} // namespace

TEST_F(HotKeysControllerTest, ANumberIsNeverUsedAgain)
{
    for (std::uint32_t number = 1; number <= 5; ++number) {
        auto const hotKey = make();
        EXPECT_EQ(numbers(), (Numbers { number }));
    }
    EXPECT_EQ(HotKeysController::registrationCount(), 5u);
}

TEST_F(HotKeysControllerTest, NoHandlerIsInstalledBeforeARegistrationSucceeds)
{
    auto& target = world.hotKeys().eventDispatcherTarget();
    auto const refused = make(45, 0x400);
    EXPECT_EQ(target.sendEvent(event(5, 1)), eventNotHandledErr);
    EXPECT_TRUE(heard.empty());
    auto granted = make();
    EXPECT_EQ(target.sendEvent(event(5, 1)), platform::noErr);
    EXPECT_EQ(heard, (Words { "down" }));
    // It stays when the last registration goes, and there is one however many come.
    granted.reset();
    auto const second = make(46);
    auto const third = make(47);
    EXPECT_EQ(target.sendEvent(event(5, 1)), platform::noErr);
    EXPECT_EQ(heard, (Words { "down", "down" }));
}

TEST_F(HotKeysControllerTest, TheHandlerTellsWhetherItCalledAnything)
{
    auto const hotKey = make();
    EXPECT_EQ(HotKeysController::hotKeySignature, 0x4B62486Bu);
    EXPECT_EQ(HotKeysController::handle(nullptr), -9874);
    CarbonEvent const withoutID({ platform::kEventClassKeyboard, 5 });
    EXPECT_EQ(send(withoutID), platform::eventParameterNotFoundErr);
    EXPECT_EQ(send(event(5, 1, 0x4B62486A)), -9874) << "another component's hot key";
    EXPECT_EQ(send(event(5, 0)), -9874);
    EXPECT_EQ(send(event(5, 2)), -9874);
    for (std::uint32_t const kind : { 0u, 1u, 4u, 7u, 0xFFFFFFFFu })
        EXPECT_EQ(send(event(kind, 1)), -9874) << kind;
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(send(event(5, 1)), 0);
    EXPECT_EQ(send(event(6, 1)), 0);
    EXPECT_EQ(heard, (Words { "down", "up" }));
}

TEST_F(HotKeysControllerTest, AReleaseWithoutAHandlerTravelsOn)
{
    auto const onlyDown = HotKey::create(world, 45, 0x100, saying("down"));
    EXPECT_EQ(send(event(6, 1)), -9874);
    auto const onlyUp = HotKey::create(world, 46, 0x100, {}, saying("up"));
    EXPECT_EQ(send(event(5, 2)), -9874);
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(send(event(6, 2)), 0);
}

TEST_F(HotKeysControllerTest, WhatIsNotHandledReachesTheHandlersThatWereThereBefore)
{
    Words passedOn;
    auto const before = world.hotKeys().eventDispatcherTarget().installEventHandler(
        { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed } }, [&](CarbonEvent const*) {
            passedOn.push_back("event");
            return platform::noErr;
        });
    auto const hotKey = make();
    auto& target = world.hotKeys().eventDispatcherTarget();
    EXPECT_EQ(target.sendEvent(event(5, 1, platform::fourCharacterCode("Othr"))), platform::noErr);
    EXPECT_EQ(passedOn.size(), 1u);
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(target.sendEvent(event(5, 1)), platform::noErr);
    EXPECT_EQ(passedOn.size(), 1u);
    EXPECT_EQ(heard, (Words { "down" }));
}

TEST_F(HotKeysControllerTest, AnEventThatArrivesWhileItIsBeingPausedCallsNothing)
{
    auto const hotKey = make();
    std::vector<OSStatus> statuses;
    world.ledger().setListener([&](auto const&) {
        EXPECT_EQ(numbers(), (Numbers { 1 })) << "the box goes after the registration";
        statuses.push_back(send(event(5, 1)));
    });
    hotKey->setPaused(true);
    world.ledger().setListener({});
    EXPECT_EQ(statuses, (std::vector<OSStatus> { eventNotHandledErr }));
    EXPECT_TRUE(heard.empty());
}

TEST_F(HotKeysControllerTest, AnEventThatArrivesWhileItIsDestroyedCallsNothing)
{
    auto hotKey = make();
    std::vector<OSStatus> statuses;
    world.ledger().setListener([&](auto const&) { statuses.push_back(send(event(5, 1))); });
    hotKey.reset();
    world.ledger().setListener({});
    EXPECT_EQ(statuses, (std::vector<OSStatus> { eventNotHandledErr }));
    EXPECT_TRUE(heard.empty());
}

TEST_F(HotKeysControllerTest, TheBoxIsThereBeforeTheSystemIsAsked)
{
    Numbers atRegistration;
    world.ledger().setListener([&](auto const&) { atRegistration = numbers(); });
    auto const hotKey = make();
    world.ledger().setListener({});
    EXPECT_EQ(atRegistration, (Numbers { 1 }));
}

TEST_F(HotKeysControllerTest, RegisteringTwiceOrUnregisteringAnUnknownOneDoesNothing)
{
    auto const hotKey = make();
    HotKeysController::register_(*hotKey);
    EXPECT_EQ(numbers(), (Numbers { 1 }));
    EXPECT_EQ(HotKeysController::registrationCount(), 1u);
    HotKeysController::unregister(*hotKey);
    HotKeysController::unregister(*hotKey);
    EXPECT_EQ(numbers(), (Numbers {}));
    EXPECT_EQ(ledger().size(), 2u);
}

TEST_F(HotKeysControllerTest, RunningOutOfNumbersIsFatal)
{
    EXPECT_EQ(HotKeysController::numberAfter(0), 1u);
    EXPECT_EQ(HotKeysController::numberAfter(0xFFFFFFFE), 0xFFFFFFFFu);
    EXPECT_DEATH((void)HotKeysController::numberAfter(0xFFFFFFFF), "fatal error: HotKeysController: no number is left");
}

TEST_F(HotKeysControllerTest, AnotherThreadIsFatal)
{
    EXPECT_DEATH(std::thread([&] { make(); }).join(), "not on the main thread: HotKeysController.register");
    EXPECT_DEATH(
        {
            auto hotKey = make();
            std::thread([&] { hotKey.reset(); }).join();
        },
        "not on the main thread: HotKeysController.unregister");
}

// Whatever is made, paused, continued and dropped, the table holds those that live and are not paused, and the system
// knows exactly those of them that it granted.
TEST_F(HotKeysControllerTest, TheTableIsTheSetOfThoseThatAreAlive)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<std::shared_ptr<HotKey>> alive;
    std::uint32_t registrations = 0;
    for (int step = 0; step < 2000; ++step) {
        auto const choice = random() % 4;
        if (choice == 0 || alive.empty()) {
            alive.push_back(make(static_cast<std::uint32_t>(random() % 6), 0x100));
            ++registrations;
        } else {
            auto const at = alive.begin() + static_cast<std::ptrdiff_t>(random() % alive.size());
            auto const& hotKey = **at;
            if (choice == 1)
                (*at)->setPaused(true);
            if (choice == 2 && hotKey.isPaused())
                ++registrations;
            if (choice == 2)
                (*at)->setPaused(false);
            if (choice == 3)
                alive.erase(at);
        }

        ASSERT_EQ(HotKeysController::registrationCount(), registrations);
        std::set<platform::UUID> expected;
        for (auto const& hotKey : alive) {
            if (!hotKey->isPaused())
                expected.insert(hotKey->identifier());
        }
        std::set<platform::UUID> inTable;
        std::size_t granted = 0;
        for (auto const& [number, box] : HotKeysController::boxesByNumber()) {
            ASSERT_LE(number, registrations);
            ASSERT_TRUE(inTable.insert(box.identifier).second);
            auto const hotKey = box.hotKey.lock();
            ASSERT_TRUE(hotKey);
            ASSERT_EQ(hotKey->identifier(), box.identifier);
            granted += box.carbonEventHotKey ? 1 : 0;
        }
        ASSERT_EQ(inTable, expected);
        ASSERT_EQ(world.hotKeys().table().idsByCombination().size(), granted);
    }
    alive.clear();
    EXPECT_TRUE(HotKeysController::boxesByNumber().empty());
    EXPECT_TRUE(world.hotKeys().table().idsByCombination().empty());
}
