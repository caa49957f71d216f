#include "tests/linux/PortalStandIn.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/ShortcutSessionFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <cstdlib>
#include <poll.h>

namespace paneweld_tests {

using platform::cmdKey;
using platform::HotKeyAvailability;
using platform::HotKeyResult;
using platform::HotKeyTruth;
using platform::shiftKey;

namespace {

constexpr std::uint32_t n = 45;
constexpr xcb_keycode_t nKey = 57;

using Calls = std::vector<std::string>;

bool isGrabbed(KeyboardOwner& user) { return !user.isFree(nKey, XCB_MOD_MASK_4); }

// A session of Wayland whose desktop has bound Command and N.
class BoundShortcut : public ShortcutSession {
protected:
    void openBound()
    {
        bus = std::make_unique<SessionBus>();
        portal = std::make_unique<PortalStandIn>(bus->address());
        openWayland();
        key = registered(n, cmdKey);
        waitFor(HotKeyAvailability::PortalBound);
    }

    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<PortalStandIn> portal;
    platform::EventHotKeyRef key;
};

} // namespace

TEST_F(ShortcutSession, XAloneIsGlobalAndAsksNobody)
{
    SessionBus const bus;
    PortalStandIn const portal(bus.address());
    desktop = std::make_unique<Desktop>();
    openBackend();
    EXPECT_EQ(truth().availability, HotKeyAvailability::X11Global);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::None);
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(truth(), (HotKeyTruth { HotKeyAvailability::X11Global, HotKeyResult::Active, "", "" }));
    settle();
    EXPECT_EQ(portal.calls(), Calls {});
}

TEST_F(ShortcutSession, WhoHoldsACombinationIsSaidWhereTheDesktopSays)
{
    platform::TemporaryFolder const home;
    home.write("kglobalshortcutsrc",
        "[kwin]\nShow Desktop=Meta+N,Meta+D,Peek at Desktop\nOverview=Meta+Alt+N,none,Toggle Overview\n");
    setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    setenv("XDG_CURRENT_DESKTOP", "KDE", 1);
    desktop = std::make_unique<Desktop>();
    KeyboardOwner manager(desktop->display());
    ASSERT_TRUE(manager.grab(nKey, XCB_MOD_MASK_4));
    ASSERT_TRUE(manager.grab(nKey, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT));
    ASSERT_TRUE(manager.grab(nKey, XCB_MOD_MASK_4 | XCB_MOD_MASK_1));
    openBackend();
    auto key = registered(n, cmdKey);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::HeldByAnotherClient);
    pumpUntil([&] { return !truth().holder.empty(); });
    EXPECT_NE(truth().holder.find("Peek at Desktop"), std::string::npos) << truth().holder;
    pumpUntil([&] { return !told.empty() && told.back().holder == truth().holder; });
    // Of another client nobody knows more.
    key.reset();
    key = registered(n, cmdKey | shiftKey);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::HeldByAnotherClient);
    // Settings are read in the order of the questions: when the next is answered, this one is.
    {
        auto const next = registered(n, cmdKey | platform::optionKey, 2);
        pumpUntil([&] { return truth().holder.find("Toggle Overview") != std::string::npos; });
    }
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::HeldByAnotherClient);
    EXPECT_EQ(truth().holder, "");
}

TEST_F(ShortcutSession, WaylandWithoutABusReachesOnlyWindowsOfX)
{
    openWayland();
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::Active);
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
}

TEST_F(ShortcutSession, WaylandWithoutAPortalReachesOnlyWindowsOfX)
{
    SessionBus const bus;
    openWayland();
    auto const key = registered(n, cmdKey);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
    EXPECT_TRUE(isGrabbed(*user));
}

TEST_F(ShortcutSession, APortalThatBindsIsUsedAlone)
{
    SessionBus const bus;
    PortalStandIn portal(bus.address());
    openWayland();
    settle();
    EXPECT_EQ(portal.calls(), Calls {});
    auto const start = std::chrono::steady_clock::now();
    auto const key = registered(n, cmdKey | shiftKey);
    waitFor(HotKeyAvailability::PortalBound);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ(truth(), (HotKeyTruth { HotKeyAvailability::PortalBound, HotKeyResult::Active, "Ctrl+Alt+N", "" }));
    EXPECT_EQ(portal.calls(),
        (Calls { "Register app.test", "version", "CreateSession", "ListShortcuts",
            "BindShortcuts hotkey-45-768 SHIFT+LOGO+n \"Start a new brainstorm\"" }));
    // The grab has gone: the press of the desktop is the only one.
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT));
    portal.press(true);
    portal.press(true);
    portal.press(false);
    pumpUntil([&] { return heard.size() == 2; });
    EXPECT_EQ(heard, once(1));
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.back(), truth());
}

TEST_F(BoundShortcut, APressThatIsNotThePortalsIsNone)
{
    openBound();
    forgePress(bus->address(), portal->client(), portal->session(), portal->shortcut());
    portal->changeTrigger("Super+N");
    pumpUntil([&] { return truth().trigger == "Super+N"; });
    EXPECT_EQ(heard, std::vector<Heard> {});
}

TEST_F(BoundShortcut, AHostMayRunANestedLoopFromInsideAPress)
{
    openBound();
    // As a dialog does that the press opens: the release comes while it is still open.
    auto const dialog = backend->eventHotKeys()->eventDispatcherTarget().installEventHandler(
        { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed } }, [this](auto const*) {
            heard.push_back({ 1, true });
            pumpUntil([this] { return heard.size() == 2; });
            return platform::noErr;
        });
    portal->press(true);
    portal->press(false);
    pumpUntil([&] { return heard.size() == 2; });
    EXPECT_EQ(heard, once(1));
}

TEST_F(ShortcutSession, WhatTheDesktopRemembersIsNotAskedAgain)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.knowsShortcut = true;
    PortalStandIn const portal(bus.address(), manners);
    openWayland();
    auto const key = registered(n, cmdKey);
    waitFor(HotKeyAvailability::PortalBound);
    EXPECT_EQ(portal.count("ListShortcuts"), 1);
    EXPECT_EQ(portal.count("BindShortcuts"), 0);
}

TEST_F(BoundShortcut, TheSameShortcutAgainKeepsItsBinding)
{
    openBound();
    auto const calls = portal->calls();
    key.reset();
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::None);
    portal->press(true);
    portal->press(false);
    // What comes after them is here: so are they.
    portal->changeTrigger("Super+N");
    pumpUntil([&] { return truth().trigger == "Super+N"; });
    key = registered(n, cmdKey, 2);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::Active);
    portal->press(true);
    portal->press(false);
    pumpUntil([&] { return heard.size() >= 2; });
    EXPECT_EQ(heard, once(2));
    EXPECT_EQ(portal->calls(), calls);
}

TEST_F(BoundShortcut, AnotherShortcutHasASessionOfItsOwn)
{
    openBound();
    auto const oldSession = portal->session(), oldShortcut = portal->shortcut();
    key.reset();
    key = registered(n, cmdKey | shiftKey, 2);
    waitFor(HotKeyAvailability::PortalBound);
    EXPECT_EQ(portal->count("Register"), 1);
    EXPECT_EQ(portal->count("CreateSession"), 2);
    EXPECT_EQ(portal->count("ListShortcuts"), 2);
    EXPECT_EQ(portal->count("BindShortcuts"), 2);
    EXPECT_EQ(portal->count("Close session"), 1);
    EXPECT_NE(portal->session(), oldSession);
    // What the desktop still says of the old one is not ours any more.
    portal->sendPress(true, oldSession, oldShortcut);
    portal->sendPress(true, portal->session(), "another");
    portal->sendPress(true, oldSession, portal->shortcut());
    portal->press(true);
    portal->press(false);
    pumpUntil([&] { return heard.size() >= 2; });
    EXPECT_EQ(heard, once(2));
}

TEST_F(ShortcutSession, AUserWhoDeclinesIsNotAskedAgain)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.bindCode = 1;
    PortalStandIn portal(bus.address(), manners);
    openWayland();
    auto key = registered(n, cmdKey);
    waitFor(HotKeyAvailability::PortalDeclined);
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::Declined);
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4));
    auto const calls = portal.calls();
    key.reset();
    key = registered(n, cmdKey | shiftKey, 2);
    settle();
    EXPECT_EQ(truth().lastRegistration, HotKeyResult::Declined);
    EXPECT_EQ(portal.calls(), calls);
}

TEST_F(ShortcutSession, AYesWithAnEmptyListIsNoBinding)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.trigger = "";
    PortalStandIn portal(bus.address(), manners);
    openWayland();
    auto const key = registered(n, cmdKey);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
    EXPECT_EQ(portal.count("BindShortcuts"), 1);
    EXPECT_TRUE(isGrabbed(*user));
    // The user goes to the desktop's settings and gives it keys.
    portal.changeTrigger("Meta+N");
    waitFor(HotKeyAvailability::PortalBound);
    EXPECT_EQ(truth().trigger, "Meta+N");
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4));
    // And takes them away.
    portal.changeTrigger("");
    waitFor(HotKeyAvailability::XWaylandFocusedOnly);
}

TEST_F(ShortcutSession, WhatWasNotBoundIsAskedAgainWhenTheHostTellsItAgain)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.bindCode = 2;
    PortalStandIn const portal(bus.address(), manners);
    openWayland();
    auto key = registered(n, cmdKey);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    EXPECT_EQ(portal.count("BindShortcuts"), 1);
    key.reset();
    key = registered(n, cmdKey);
    pumpUntil([&] { return portal.count("BindShortcuts") == 2; });
    EXPECT_EQ(portal.count("CreateSession"), 2);
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
}

TEST_F(ShortcutSession, OldOrBrokenPortalsLeaveTheGrab)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.hasShortcuts = false;
    {
        PortalStandIn const old(bus.address(), manners);
        openWayland();
        auto const key = registered(n, cmdKey);
        pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
        EXPECT_EQ(old.calls(), (Calls { "Register app.test", "version" }));
        EXPECT_TRUE(isGrabbed(*user));
    }
    manners.hasShortcuts = true;
    manners.isMalformed = true;
    PortalStandIn const broken(bus.address(), manners);
    auto const key = registered(n, cmdKey);
    pumpUntil([&] { return broken.count("CreateSession") == 1 && truth().lastRegistration == HotKeyResult::Active; });
    EXPECT_EQ(truth().availability, HotKeyAvailability::XWaylandFocusedOnly);
}

TEST_F(ShortcutSession, APortalThatGoesAndComesBackBindsAgain)
{
    SessionBus const bus;
    auto portal = std::make_unique<PortalStandIn>(bus.address());
    openWayland();
    auto const key = registered(n, cmdKey);
    waitFor(HotKeyAvailability::PortalBound);
    portal->press(true);
    pumpUntil([&] { return heard.size() == 1; });
    portal.reset();
    waitFor(HotKeyAvailability::XWaylandFocusedOnly);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    // What was down when it went is up.
    EXPECT_EQ(heard, once(1));
    EXPECT_TRUE(isGrabbed(*user));
    portal = std::make_unique<PortalStandIn>(bus.address());
    waitFor(HotKeyAvailability::PortalBound);
    // Another program: it is told who we are.
    EXPECT_EQ(portal->count("Register"), 1);
    EXPECT_EQ(portal->count("ListShortcuts"), 1);
    EXPECT_EQ(portal->count("BindShortcuts"), 1);
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4));
    portal->press(true);
    portal->press(false);
    pumpUntil([&] { return heard.size() == 4; });
}

TEST_F(ShortcutSession, APortalThatComesLateIsToldWhoWeAreAndBinds)
{
    SessionBus const bus;
    openWayland();
    auto const key = registered(n, cmdKey);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    PortalStandIn const portal(bus.address());
    waitFor(HotKeyAvailability::PortalBound);
    auto const calls = portal.calls();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0], "Register app.test");
}

TEST_F(ShortcutSession, AnotherLayoutKeepsTheBinding)
{
    SessionBus const bus;
    PortalStandIn portal(bus.address());
    openWayland();
    constexpr std::uint32_t a = 0;
    auto key = registered(a, cmdKey);
    waitFor(HotKeyAvailability::PortalBound);
    user->setLayout({ "fr" });
    settle();
    key.reset();
    key = registered(a, cmdKey);
    portal.changeTrigger("Super+A");
    pumpUntil([&] { return truth().trigger == "Super+A"; });
    EXPECT_EQ(portal.count("CreateSession"), 1);
    EXPECT_EQ(portal.count("BindShortcuts"), 1);
}

TEST_F(BoundShortcut, ALostReleaseDoesNotSilenceTheNextPress)
{
    openBound();
    portal->press(true, 100);
    portal->press(true, 200);
    portal->press(false, 200);
    pumpUntil([&] { return heard.size() == 4; });
    EXPECT_EQ(heard, (std::vector<Heard> { { 1, true }, { 1, false }, { 1, true }, { 1, false } }));
}

TEST_F(ShortcutSession, AUserWhoTakesTheirTimeIsWaitedForAndTheGrabServesMeanwhile)
{
    SessionBus const bus;
    PortalStandIn::Manners manners;
    manners.neverAnswersBind = true;
    PortalStandIn portal(bus.address(), manners);
    openWayland();
    auto made = backend->eventHotKeys()->registerEventHotKey(n, cmdKey, { 1, 1 });
    pumpUntil([&] { return portal.count("BindShortcuts") == 1; });
    settle();
    EXPECT_EQ(truth(), (HotKeyTruth { HotKeyAvailability::XWaylandFocusedOnly, HotKeyResult::Pending, "", "" }));
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
    // The host thinks better of it: the question is taken back.
    made.reference.reset();
    made = backend->eventHotKeys()->registerEventHotKey(n, cmdKey | shiftKey, { 1, 2 });
    pumpUntil([&] { return portal.count("BindShortcuts") == 2; });
    EXPECT_EQ(portal.count("Close request"), 1);
    EXPECT_EQ(portal.count("Close session"), 1);
}

TEST_F(BoundShortcut, ASessionThatTheDesktopEndsIsNotBoundAnyMore)
{
    openBound();
    portal->closeSession();
    waitFor(HotKeyAvailability::XWaylandFocusedOnly);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    EXPECT_EQ(portal->count("BindShortcuts"), 1);
}

TEST_F(ShortcutSession, ABusThatDiesIsTold)
{
    SessionBus bus;
    PortalStandIn const portal(bus.address());
    openWayland();
    auto const key = registered(n, cmdKey);
    waitFor(HotKeyAvailability::PortalBound);
    bus.end();
    waitFor(HotKeyAvailability::XWaylandFocusedOnly);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
    // Asked again there is nobody, and nothing goes wrong.
    auto const other = registered(n, cmdKey | shiftKey, 2);
    pumpUntil([&] { return truth().lastRegistration == HotKeyResult::Active; });
}

TEST_F(ShortcutSession, ABusThatComesBackHasTheShortcutAgain)
{
    SessionBus bus;
    auto portal = std::make_unique<PortalStandIn>(bus.address());
    openWayland();
    auto const key = registered(n, cmdKey);
    for (int i = 0; i < 3; ++i) {
        waitFor(HotKeyAvailability::PortalBound);
        EXPECT_EQ(portal->count("BindShortcuts"), 1);
        portal.reset();
        bus.end();
        waitFor(HotKeyAvailability::XWaylandFocusedOnly);
        bus.startAgain();
        portal = std::make_unique<PortalStandIn>(bus.address());
    }
    waitFor(HotKeyAvailability::PortalBound);
}

TEST_F(ShortcutSession, WithoutAServerThePortalStillBinds)
{
    SessionBus const bus;
    PortalStandIn portal(bus.address());
    setenv("WAYLAND_DISPLAY", "wayland-7", 1);
    unsetenv("DISPLAY");
    auto made = backends::makeLinuxPlatform({});
    ASSERT_TRUE(made.hasValue());
    auto const world = made.take();
    auto& service = *world->eventHotKeys();
    EXPECT_EQ(service.truth().availability, HotKeyAvailability::Unavailable);
    auto const key = service.registerEventHotKey(n, cmdKey, { 1, 1 });
    EXPECT_EQ(key.status, platform::noErr);
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (service.truth().availability != HotKeyAvailability::PortalBound && std::chrono::steady_clock::now() < end) {
        pollfd wait { world->pollableDescriptor(), POLLIN, 0 };
        poll(&wait, 1, 5);
        world->dispatch();
    }
    EXPECT_EQ(service.truth().lastRegistration, HotKeyResult::Active);
    EXPECT_EQ(portal.count("BindShortcuts hotkey-45-256 LOGO+n"), 1);
}

TEST_F(ShortcutSession, WithoutAServerAndAPortalThereIsNobodyToAsk)
{
    unsetenv("DISPLAY");
    auto made = backends::makeLinuxPlatform({});
    ASSERT_TRUE(made.hasValue());
    auto const world = made.take();
    auto const key = world->eventHotKeys()->registerEventHotKey(n, cmdKey, { 1, 1 });
    EXPECT_EQ(key.status, platform::noErr);
    EXPECT_EQ(world->eventHotKeys()->truth(),
        (HotKeyTruth { HotKeyAvailability::Unavailable, HotKeyResult::Unavailable, "", "" }));
}

} // namespace paneweld_tests
