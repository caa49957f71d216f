#include "iOS/GlobalShortcutController.h"
#include "hotkey/HotKeysController.h"
#include "tests/support/World.h"

#include <thread>

using namespace paneweld;

namespace {

constexpr std::uint32_t n = 45;
constexpr std::uint32_t cmdKey = 0x100;

class GlobalShortcut : public World {
protected:
    using Lines = std::vector<std::string>;

    void update(std::uint32_t keyCode, std::uint32_t modifiers, bool isEnabled = true)
    {
        post(NotificationName::updateGlobalNewBrainstormShortcut(),
            UpdateGlobalNewBrainstormShortcut { keyCode, modifiers, isEnabled }.userInfo());
    }

    // Registrations as they came and went since the last look.
    Lines registrations()
    {
        auto lines = ledger();
        world.ledger().clear();
        return lines;
    }

    bool strike(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        return world.hotKeys().press(keyCode, modifiers) && world.hotKeys().release(keyCode, modifiers);
    }

    std::shared_ptr<GlobalShortcutController> controller = GlobalShortcutController::create(world);
    Hearer triggers { NotificationName::globalNewBrainstormShortcutTriggered() };
};

} // namespace

TEST_F(GlobalShortcut, ThereIsNoneUntilTheHostTells)
{
    EXPECT_TRUE(registrations().empty());
    EXPECT_TRUE(log().empty());
    update(n, cmdKey);
    EXPECT_EQ(registrations(), Lines { "hotkey register code=45 modifiers=256 id=1" });
    EXPECT_EQ(log(), Lines { "debug: registered new brainstorm global shortcut: keyCode=45, modifiers=256" });
}

TEST_F(GlobalShortcut, APressAsksTheHostForANewBrainstorm)
{
    update(n, cmdKey);
    EXPECT_TRUE(strike(n, cmdKey));
    ASSERT_EQ(triggers.heard.size(), 1u);
    EXPECT_FALSE(triggers.heard[0].object);
    EXPECT_FALSE(triggers.heard[0].userInfo);
    EXPECT_EQ(log().back(), "debug: global shortcut triggered");
    EXPECT_EQ(log().size(), 2u);
}

TEST_F(GlobalShortcut, DisablingTakesItAwayWhateverTheKeyCode)
{
    update(n, cmdKey);
    registrations();
    update(127, 0, false);
    EXPECT_EQ(registrations(), Lines { "hotkey unregister id=1" });
    EXPECT_EQ(log().back(), "debug: global new brainstorm shortcut disabled");
    EXPECT_FALSE(strike(n, cmdKey));
}

TEST_F(GlobalShortcut, AnUnknownKeyCodeTakesTheOldOneAwayAndIsLogged)
{
    update(n, cmdKey);
    registrations();
    update(127, cmdKey);
    EXPECT_EQ(registrations(), Lines { "hotkey unregister id=1" });
    EXPECT_EQ(log().back(), "error: failed to create key from key code: 127");
}

TEST_F(GlobalShortcut, AnIncompleteOrMistypedUpdateChangesNothing)
{
    update(n, cmdKey);
    registrations();
    auto const lines = log().size();
    auto const& name = NotificationName::updateGlobalNewBrainstormShortcut();
    platform::NotificationCenter::defaultCenter().post({ name, nullptr, {} });
    platform::Dictionary const whole { { "keyCode", 2u }, { "modifiers", 256u }, { "isEnabled", true } };
    for (auto const& [key, unused] : whole) {
        auto missing = whole;
        missing.erase(key);
        post(name, missing);
        auto mistyped = whole;
        mistyped[key] = "text";
        post(name, mistyped);
    }
    auto negative = whole;
    negative["keyCode"] = -1;
    post(name, negative);
    EXPECT_TRUE(registrations().empty());
    EXPECT_EQ(log().size(), lines);
    EXPECT_TRUE(strike(n, cmdKey));
}

TEST_F(GlobalShortcut, TheSameUpdateAgainRegistersAnewUnderAnotherNumber)
{
    update(n, cmdKey);
    update(n, cmdKey);
    EXPECT_EQ(registrations(),
        (Lines { "hotkey register code=45 modifiers=256 id=1", "hotkey unregister id=1",
            "hotkey register code=45 modifiers=256 id=2" }));
    EXPECT_TRUE(strike(n, cmdKey));
    EXPECT_EQ(triggers.heard.size(), 1u);
}

TEST_F(GlobalShortcut, OtherModifierBitsAreDroppedButLogged)
{
    update(n, cmdKey | 0x4000);
    EXPECT_EQ(registrations(), Lines { "hotkey register code=45 modifiers=256 id=1" });
    EXPECT_EQ(log().back(), "debug: registered new brainstorm global shortcut: keyCode=45, modifiers=16640");
}

TEST_F(GlobalShortcut, ARefusalOfTheSystemIsSilentAndToldOnlyByTheQuery)
{
    auto const other = world.hotKeys().registerEventHotKey(n, cmdKey, { 1, 1 });
    registrations();
    update(n, cmdKey);
    EXPECT_EQ(log(), Lines { "debug: registered new brainstorm global shortcut: keyCode=45, modifiers=256" });
    EXPECT_TRUE(strike(n, cmdKey));
    EXPECT_TRUE(triggers.heard.empty());
    // The refused one ends like any other.
    update(n, cmdKey, false);
    EXPECT_EQ(hotkey::HotKeysController::boxesByNumber().size(), 0u);
}

TEST_F(GlobalShortcut, TheQuerySaysWhoHoldsIt)
{
    using platform::HotKeyResult;
    int changes = 0;
    world.hotKeys().setTruthHandler([&] { ++changes; });
    world.hotKeys().setHeldElsewhere(n, cmdKey);
    update(n, cmdKey);
    world.settle();
    EXPECT_EQ(world.hotKeys().truth().lastRegistration, HotKeyResult::HeldByAnotherClient);
    EXPECT_EQ(changes, 1);
    update(n, cmdKey | 0x200);
    world.settle();
    EXPECT_EQ(world.hotKeys().truth().lastRegistration, HotKeyResult::Active);
    update(n, cmdKey, false);
    world.settle();
    EXPECT_EQ(world.hotKeys().truth().lastRegistration, HotKeyResult::None);
    EXPECT_EQ(changes, 3);
}

TEST_F(GlobalShortcut, AWorldWithoutHotKeysIsLikeOneThatRefuses)
{
    world.setHasHotKeys(false);
    update(n, cmdKey);
    EXPECT_TRUE(registrations().empty());
    EXPECT_EQ(log(), Lines { "debug: registered new brainstorm global shortcut: keyCode=45, modifiers=256" });
}

TEST_F(GlobalShortcut, TheHostMayChangeItFromInsideTheTrigger)
{
    update(n, cmdKey);
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { NotificationName::globalNewBrainstormShortcutTriggered(), nullptr, {} },
        [this](auto const&) { update(n, cmdKey, false); });
    EXPECT_TRUE(world.hotKeys().press(n, cmdKey));
    EXPECT_EQ(triggers.heard.size(), 1u);
    EXPECT_FALSE(strike(n, cmdKey));
}

TEST_F(GlobalShortcut, NothingHappensAfterTheControllerHasGone)
{
    update(n, cmdKey);
    registrations();
    controller.reset();
    EXPECT_EQ(registrations(), Lines { "hotkey unregister id=1" });
    update(n, cmdKey);
    EXPECT_TRUE(registrations().empty());
}

TEST_F(GlobalShortcut, ItsSelectorTakesANotificationByName)
{
    auto const& description = GlobalShortcutController::runtimeClass();
    EXPECT_EQ(description.name, "PaneweldGlobalShortcutController");
    EXPECT_TRUE(description.instancesRespondToSelector("handleNewBrainstormShortcutUpdate:"));
}

using GlobalShortcutDeath = GlobalShortcut;

TEST_F(GlobalShortcutDeath, TheTriggerDiesOnAnotherThread)
{
    update(n, cmdKey);
    EXPECT_DEATH(std::thread([this] { world.hotKeys().press(n, cmdKey); }).join(), "main thread");
}
