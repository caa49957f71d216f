#include "tests/linux/HotKeysTest.h"

#include <array>
#include <chrono>
#include <csignal>
#include <map>
#include <poll.h>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

using platform::cmdKey;
using platform::controlKey;
using platform::HotKeyAvailability;
using platform::HotKeyResult;
using platform::optionKey;
using platform::shiftKey;

namespace {

constexpr std::uint32_t n = 45;
constexpr xcb_keycode_t nKey = 57;

constexpr std::array modifierBits { cmdKey, optionKey, controlKey, shiftKey };

} // namespace

using HotKeys = HotKeysTest;

TEST_F(HotKeys, OnePressIsOneDownAndOneUpInEveryLockStateWithNumLockOnTwoModifiers)
{
    open(With::WindowManager);
    constexpr std::array<xcb_keycode_t, 3> locks { capsLockKey, numLockKey, scrollLockKey };
    // Num Lock and Scroll Lock on Mod2 and Mod3, then the other way round.
    for (auto const& [numLockModifier, scrollLockModifier] : { std::pair { 3, 4 }, { 4, 3 } }) {
        user->setModifierKeys(numLockModifier, {});
        user->setModifierKeys(scrollLockModifier, {});
        user->setModifierKeys(numLockModifier, { numLockKey });
        user->setModifierKeys(scrollLockModifier, { scrollLockKey });
        settle();
        auto const key = registered(n, cmdKey | shiftKey);
        ASSERT_EQ(result(), HotKeyResult::Active);
        std::set<std::uint16_t> states;
        for (unsigned state = 0; state < 8; ++state) {
            for (unsigned i = 0; i < 3; ++i) {
                if (state & 1u << i)
                    strike({ locks[i] });
            }
            states.insert(user->modifierState());
            heard.clear();
            strike({ leftSuperKey, leftShiftKey, nKey });
            EXPECT_EQ(heard, once(1)) << "lock state " << state << ", Num Lock on modifier " << numLockModifier;
            for (unsigned i = 0; i < 3; ++i) {
                if (state & 1u << i)
                    strike({ locks[i] });
            }
        }
        // The locks were really on, each in its own bit.
        EXPECT_EQ(states.size(), 8u);
        EXPECT_TRUE(states.contains(
            static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK | 1u << numLockModifier | 1u << scrollLockModifier)));
    }
}

TEST_F(HotKeys, EveryPositionFiresUnderEveryLayout)
{
    open();
    std::vector<platform::EventHotKeyRef> keys;
    for (auto const code : virtualKeyCodesOfKeyboard())
        keys.push_back(registered(code, 0, code));
    ASSERT_EQ(keys.size(), 113u);
    struct Layout {
        std::vector<std::string> arguments;
        int group;
    };
    Layout const layouts[] = { { { "us" }, 0 }, { { "fr" }, 0 }, { { "de" }, 0 }, { { "us", "-variant", "dvorak" }, 0 },
        { { "ru" }, 0 }, { { "us,ru", "-variant", "," }, 0 }, { { "us,ru", "-variant", "," }, 1 } };
    for (auto const& layout : layouts) {
        user->setLayout(layout.arguments);
        user->lockGroup(layout.group);
        settle();
        settle();
        for (auto const code : virtualKeyCodesOfKeyboard()) {
            heard.clear();
            // Twice, so that a lock is off again.
            strike({ *evdevKeycode(code) });
            strike({ *evdevKeycode(code) });
            auto expected = once(code);
            expected.insert(expected.end(), { { code, true }, { code, false } });
            EXPECT_EQ(heard, expected) << "virtual key code " << code << ", layout " << layout.arguments[0];
        }
    }
}

TEST_F(HotKeys, AModifierOnAnotherBitIsFollowed)
{
    open();
    auto const key = registered(n, cmdKey);
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
    auto const oldBit = XCB_MOD_MASK_4, newBit = XCB_MOD_MASK_3;
    EXPECT_FALSE(user->isFree(nKey, oldBit));
    user->setModifierKeys(6, {});
    pumpUntil([&] { return result() == HotKeyResult::ModifierNotOnKeyboard; });
    user->setModifierKeys(5, { leftSuperKey });
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    EXPECT_TRUE(user->becomesFree(nKey, oldBit));
    EXPECT_FALSE(user->isFree(nKey, newBit));
    heard.clear();
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
}

TEST_F(HotKeys, AKeyThatMovesToAnotherKeycodeIsFollowedWithinATenthOfASecond)
{
    open();
    constexpr std::uint32_t upArrow = 126;
    auto const key = registered(upArrow, cmdKey);
    auto const before = *evdevKeycode(upArrow);
    EXPECT_FALSE(user->isFree(before, XCB_MOD_MASK_4));
    // Another keyboard, whose arrow up has number 98.
    constexpr xcb_keycode_t after = 98;
    user->setLayout({ "us", "-keycodes", "xfree86" });
    auto const start = std::chrono::steady_clock::now();
    pumpUntil([&] { return result() == HotKeyResult::Active && user->isFree(before, XCB_MOD_MASK_4); });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_FALSE(user->isFree(after, XCB_MOD_MASK_4));
}

TEST_F(HotKeys, ARegrabThatFailsIsTold)
{
    open();
    constexpr std::uint32_t upArrow = 126;
    auto const key = registered(upArrow, cmdKey);
    int changes = 0;
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    backend->eventHotKeys()->setTruthHandler([&] { ++changes; });
    settle();
    changes = 0;
    constexpr xcb_keycode_t after = 98;
    ASSERT_TRUE(user->grab(after, XCB_MOD_MASK_4));
    user->setLayout({ "us", "-keycodes", "xfree86" });
    pumpUntil([&] { return result() == HotKeyResult::HeldByAnotherClient && changes > 0; });
    EXPECT_TRUE(user->becomesFree(*evdevKeycode(upArrow), XCB_MOD_MASK_4));
    // Back again, and all is well.
    user->setLayout({ "us", "-keycodes", "evdev" });
    pumpUntil([&] { return result() == HotKeyResult::Active; });
}

TEST_F(HotKeys, WhatAnotherClientHoldsIsTold)
{
    open();
    // With one lock on alone: it would work now and then.
    ASSERT_TRUE(user->grab(nKey, XCB_MOD_MASK_4 | XCB_MOD_MASK_LOCK));
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(result(), HotKeyResult::HeldByAnotherClient);
    EXPECT_EQ(backend->eventHotKeys()->truth().availability, HotKeyAvailability::X11Global);
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4));
    strike({ leftSuperKey, nKey });
    EXPECT_TRUE(heard.empty());
}

TEST_F(HotKeys, WhatTheWindowManagerHoldsIsToldAndTakenWhenItHasGone)
{
    open(With::WindowManager);
    constexpr std::uint32_t tab = 48;
    auto const key = registered(tab, optionKey);
    EXPECT_EQ(result(), HotKeyResult::HeldByAnotherClient);
    desktop->endWindowManager();
    pumpUntil([&] { return result() == HotKeyResult::Active; });
}

TEST_F(HotKeys, WhatAProgramHeldIsTakenWhenTheProgramHasEnded)
{
    open();
    auto other = std::make_unique<KeyboardOwner>(desktop->display());
    Toolkit program(desktop->display());
    ASSERT_TRUE(other->grab(nKey, XCB_MOD_MASK_4));
    auto const window = program.make();
    program.map(window);
    auto const key = registered(n, cmdKey);
    // Longer than the tries of the first moment.
    pumpFor(std::chrono::milliseconds(1800));
    EXPECT_EQ(result(), HotKeyResult::HeldByAnotherClient);
    other.reset();
    program.destroy(window);
    pumpUntil([&] { return result() == HotKeyResult::Active; });
}

TEST_F(HotKeys, WhatAnotherClientHoldsForAMomentIsTakenWhenItIsFree)
{
    open();
    ASSERT_TRUE(user->grab(nKey, XCB_MOD_MASK_4));
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(result(), HotKeyResult::HeldByAnotherClient);
    user->ungrab(nKey, XCB_MOD_MASK_4);
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
}

TEST_F(HotKeys, AKeyOrAModifierThatTheKeyboardHasNotIsTold)
{
    open();
    constexpr std::uint32_t functionKey = 63;
    {
        auto const key = registered(functionKey, cmdKey);
        EXPECT_EQ(result(), HotKeyResult::KeyNotOnKeyboard);
    }
    EXPECT_EQ(result(), HotKeyResult::None);
    user->setModifierKeys(6, {});
    settle();
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(result(), HotKeyResult::ModifierNotOnKeyboard);
    user->setModifierKeys(6, { leftSuperKey });
    pumpUntil([&] { return result() == HotKeyResult::Active; });
}

TEST_F(HotKeys, TheSameCombinationTwiceInOneProcessIsRefused)
{
    open();
    auto const key = registered(n, cmdKey);
    auto& service = *backend->eventHotKeys();
    EXPECT_EQ(service.registerEventHotKey(n, cmdKey, { 1, 2 }).status, platform::eventHotKeyExistsErr);
    constexpr std::uint32_t rightShiftKey = 0x2000;
    EXPECT_EQ(service.registerEventHotKey(n, rightShiftKey, { 1, 3 }).status, platform::paramErr);
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, once(1));
}

TEST_F(HotKeys, NothingIsGrabbedThatWasNotAskedFor)
{
    open(With::WindowManager);
    std::map<xcb_keycode_t, std::set<std::uint16_t>> heldBefore;
    auto const held = [&] {
        std::map<xcb_keycode_t, std::set<std::uint16_t>> all;
        for (int key = 8; key < 256; ++key) {
            auto const code = static_cast<xcb_keycode_t>(key);
            if (user->isFree(code, XCB_MOD_MASK_ANY))
                continue;
            for (std::uint16_t modifiers = 0; modifiers < 256; ++modifiers) {
                if (!user->isFree(code, modifiers))
                    all[code].insert(modifiers);
            }
        }
        return all;
    };
    heldBefore = held();
    EXPECT_FALSE(heldBefore.contains(nKey));
    {
        auto const key = registered(n, cmdKey | optionKey);
        auto now = held();
        constexpr std::uint16_t asked = XCB_MOD_MASK_4 | XCB_MOD_MASK_1;
        EXPECT_EQ(now[nKey],
            (std::set<std::uint16_t> { asked, asked | XCB_MOD_MASK_LOCK, asked | XCB_MOD_MASK_2,
                asked | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 }));
        now.erase(nKey);
        EXPECT_EQ(now, heldBefore);
    }
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_ANY));
    EXPECT_EQ(held(), heldBefore);
}

TEST_F(HotKeys, AllSixteenModifierSetsAreToldApart)
{
    open();
    constexpr std::array<xcb_keycode_t, 4> modifierKeys { leftSuperKey, leftAltKey, leftControlKey, leftShiftKey };
    std::vector<platform::EventHotKeyRef> keys;
    for (std::uint32_t set = 0; set < 16; ++set) {
        std::uint32_t modifiers = 0;
        for (std::size_t i = 0; i < 4; ++i)
            modifiers |= set & 1u << i ? modifierBits[i] : 0;
        keys.push_back(registered(n, modifiers, set));
    }
    for (std::uint32_t set = 0; set < 16; ++set) {
        std::vector<xcb_keycode_t> pressed;
        for (std::size_t i = 0; i < 4; ++i) {
            if (set & 1u << i)
                pressed.push_back(modifierKeys[i]);
        }
        pressed.push_back(nKey);
        heard.clear();
        strike(pressed);
        EXPECT_EQ(heard, once(set));
    }
}

TEST_F(HotKeys, TheUpComesWithTheKeyAlsoWhenTheModifierGoesFirst)
{
    open();
    auto const key = registered(n, cmdKey);
    user->press(leftSuperKey);
    user->press(nKey);
    pumpUntil([&] { return heard.size() == 1; });
    user->release(leftSuperKey);
    // Other keys meanwhile are nobody's business.
    user->press(38);
    user->release(38);
    settle();
    settle();
    EXPECT_EQ(heard.size(), 1u);
    auto const released = std::chrono::steady_clock::now();
    user->release(nKey);
    user->sync();
    pumpUntil([&] { return heard.size() == 2; });
    EXPECT_LT(std::chrono::steady_clock::now() - released, std::chrono::milliseconds(20));
    EXPECT_EQ(heard, once(1));
}

TEST_F(HotKeys, HeldForFiveSecondsItIsOneDownAndOneUp)
{
    open(With::WindowManager);
    // The server does repeat keys: a window that has the keyboard sees it.
    auto const shown = show({ .title = "witness" });
    pumpUntil([&] { return shown->isKeyWindow(); });
    user->press(nKey);
    pumpUntil([&] { return toolkit->pressedKeys.size() > 3; });
    user->release(nKey);
    settle();

    auto const key = registered(n, cmdKey);
    user->press(leftSuperKey);
    user->press(nKey);
    user->sync();
    pumpFor(std::chrono::seconds(5));
    EXPECT_EQ(heard, (std::vector<Heard> { { 1, true } }));
    user->release(nKey);
    user->release(leftSuperKey);
    user->sync();
    pumpUntil([&] { return heard.size() > 1; });
    settle();
    EXPECT_EQ(heard, once(1));
}

TEST_F(HotKeys, TheFocusStaysAndTheKeyboardIsFreeAfterwards)
{
    open(With::WindowManager);
    auto const shown = show({ .title = "in front" });
    pumpUntil([&] { return shown->isKeyWindow(); });
    auto const key = registered(n, cmdKey);
    auto const focus = user->focus();
    user->press(leftSuperKey);
    user->press(nKey);
    pumpUntil([&] { return heard.size() == 1; });
    EXPECT_EQ(user->focus(), focus);
    EXPECT_FALSE(user->canGrabKeyboard());
    user->release(nKey);
    user->release(leftSuperKey);
    user->sync();
    EXPECT_TRUE(user->canGrabKeyboard());
    pumpUntil([&] { return heard.size() == 2; });
    EXPECT_EQ(user->focus(), focus);
    EXPECT_TRUE(shown->isKeyWindow());
    EXPECT_EQ(std::count(news.begin(), news.end(), "resign in front"), 0);
}

TEST_F(HotKeys, LetGoWhileDownNothingComesAnyMore)
{
    open();
    auto key = registered(n, cmdKey);
    user->press(leftSuperKey);
    user->press(nKey);
    pumpUntil([&] { return heard.size() == 1; });
    // The same combination at once again, as a host does that tells its setting twice: the key that is down is not a
    // new press.
    key.reset();
    key = registered(n, cmdKey, 2);
    pumpFor(std::chrono::milliseconds(700));
    user->release(nKey);
    user->release(leftSuperKey);
    settle();
    settle();
    EXPECT_EQ(heard.size(), 1u);
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(heard, (std::vector<Heard> { { 1, true }, { 2, true }, { 2, false } }));
}

TEST_F(HotKeys, AProcessThatIsKilledLeavesNothingGrabbed)
{
    desktop = std::make_unique<Desktop>();
    int told[2];
    ASSERT_EQ(pipe(told), 0);
    auto const host = fork();
    if (host == 0) {
        installBackend();
        auto const made = backend->eventHotKeys()->registerEventHotKey(n, cmdKey, { 1, 1 });
        while (result() == HotKeyResult::Pending)
            backend->dispatch();
        char const answer = result() == HotKeyResult::Active ? 'y' : 'n';
        if (write(told[1], &answer, 1) == 1)
            pause();
        _exit(1);
    }
    char answer = 0;
    ASSERT_EQ(read(told[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    KeyboardOwner probe(desktop->display());
    EXPECT_FALSE(probe.isFree(nKey, XCB_MOD_MASK_4));
    kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    EXPECT_TRUE(probe.becomesFree(nKey, XCB_MOD_MASK_4));
    close(told[0]);
    close(told[1]);
}

TEST_F(HotKeys, TheHostChoosesWhichKeysAreTheModifiers)
{
    desktop = std::make_unique<Desktop>();
    toolkit = std::make_unique<Toolkit>(desktop->display());
    onlooker = std::make_unique<Onlooker>(desktop->display());
    backends::LinuxOptions options;
    options.hotKeyModifiers
        = { platform::ModifierKey::Control, platform::ModifierKey::Alt, platform::ModifierKey::Super };
    installBackend(options);
    listen();
    auto const key = registered(n, cmdKey);
    strike({ leftSuperKey, nKey });
    EXPECT_TRUE(heard.empty());
    strike({ leftControlKey, nKey });
    EXPECT_EQ(heard, once(1));

    options.hotKeyModifiers.option = platform::ModifierKey::Control;
    EXPECT_FALSE(backends::makeLinuxPlatform(options).hasValue());
}

TEST_F(HotKeys, KeysThatCannotBeToldApartAreNoModifiers)
{
    desktop = std::make_unique<Desktop>();
    toolkit = std::make_unique<Toolkit>(desktop->display());
    onlooker = std::make_unique<Onlooker>(desktop->display());
    backends::LinuxOptions options;
    // On this keyboard Meta gives the same bit as Alt.
    options.hotKeyModifiers.command = platform::ModifierKey::Meta;
    installBackend(options);
    listen();
    {
        auto const key = registered(n, cmdKey);
        EXPECT_EQ(result(), HotKeyResult::ModifierNotOnKeyboard);
    }
    auto const key = registered(n, controlKey);
    EXPECT_EQ(result(), HotKeyResult::Active);
}

TEST_F(HotKeys, AServerThatIsLostIsTold)
{
    open();
    auto const key = registered(n, cmdKey);
    EXPECT_EQ(backend->eventHotKeys()->truth().availability, HotKeyAvailability::X11Global);
    desktop->endServer();
    EXPECT_TRUE(pumpWithoutServerUntil(
        [&] { return backend->eventHotKeys()->truth().availability == HotKeyAvailability::Unavailable; }));
    EXPECT_EQ(result(), HotKeyResult::Unavailable);
}

TEST_F(HotKeys, NothingWakesWhileNothingHappens)
{
    open(With::WindowManager);
    auto const key = registered(n, cmdKey);
    settle();
    pumpFor(std::chrono::milliseconds(100));
    pollfd idle { backend->pollableDescriptor(), POLLIN, 0 };
    EXPECT_EQ(poll(&idle, 1, 500), 0);
}

} // namespace paneweld_tests
