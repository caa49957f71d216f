#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "platform/carbon/EventHotKeys.h"
#include "tests/linux/HotKeysTest.h"
#include "tests/support/RunOptions.h"

#include <random>

namespace paneweld_tests {

using namespace paneweld;
using platform::HotKeyResult;

namespace {

// The whole plug-in on a real server, and a host that tells its setting.
class ShortcutOnX : public HotKeysTest {
protected:
    void open()
    {
        start(With::Nothing);
        user = std::make_unique<KeyboardOwner>(desktop->display());
        controller = AppKitController::create(*backend);
        m_triggers = platform::Observation(platform::NotificationCenter::defaultCenter(),
            { NotificationName::globalNewBrainstormShortcutTriggered(), nullptr, {} },
            [this](auto const&) { ++triggered; });
    }

    void update(UpdateGlobalNewBrainstormShortcut const& setting)
    {
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::updateGlobalNewBrainstormShortcut(), nullptr, setting.userInfo() });
    }

    std::shared_ptr<AppKitController> controller;
    int triggered = 0;

private:
    platform::Observation m_triggers;
};

constexpr std::uint32_t modifierBits[] { platform::cmdKey, platform::optionKey, platform::controlKey,
    platform::shiftKey };
constexpr std::uint16_t serverBits[] { XCB_MOD_MASK_4, XCB_MOD_MASK_1, XCB_MOD_MASK_CONTROL, XCB_MOD_MASK_SHIFT };

struct OnServer {
    xcb_keycode_t key;
    std::uint16_t modifiers;
};

// What must be grabbed after an update, and nothing else.
std::optional<OnServer> expectedGrab(UpdateGlobalNewBrainstormShortcut const& setting)
{
    auto const key = evdevKeycode(setting.keyCode);
    if (!setting.isEnabled || !key)
        return std::nullopt;
    OnServer grab { *key, 0 };
    for (std::size_t i = 0; i < 4; ++i) {
        if (setting.modifiers & modifierBits[i])
            grab.modifiers = static_cast<std::uint16_t>(grab.modifiers | serverBits[i]);
    }
    return grab;
}

} // namespace

TEST_F(ShortcutOnX, APressOpensANewBrainstormWhateverHasTheKeyboard)
{
    open();
    constexpr xcb_keycode_t nKey = 57;
    update({ 45, platform::cmdKey | platform::shiftKey, true });
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    strike({ leftSuperKey, leftShiftKey, nKey });
    EXPECT_EQ(triggered, 1);
    strike({ leftSuperKey, nKey });
    EXPECT_EQ(triggered, 1);
}

TEST_F(ShortcutOnX, AThousandUpdatesLeaveOneGrabOrNone)
{
    open();
    std::mt19937 random(paneweld_tests::testSeed());
    auto const pick = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    std::optional<OnServer> before;
    for (int i = 0; i < 1000; ++i) {
        UpdateGlobalNewBrainstormShortcut setting;
        // Keys of the table, codes that no key has, bits that no modifier has, and now and then the same again.
        setting.keyCode = pick(140);
        for (auto const bit : { 0x100u, 0x200u, 0x800u, 0x1000u, 0x400u, 0x4000u })
            setting.modifiers |= pick(2) ? bit : 0;
        setting.isEnabled = pick(5) != 0;
        auto const repetitions = 1 + pick(3);
        for (std::uint32_t k = 0; k < repetitions; ++k)
            update(setting);
        pumpUntil([&] { return result() != HotKeyResult::Pending; });
        settle();
        auto const expected = expectedGrab(setting);
        EXPECT_EQ(result() == HotKeyResult::Active, expected.has_value()) << "update " << i;
        if (expected) {
            EXPECT_FALSE(user->isFree(expected->key, expected->modifiers)) << "update " << i;
        }
        bool const isSame
            = expected && before && expected->key == before->key && expected->modifiers == before->modifiers;
        if (before && !isSame) {
            EXPECT_TRUE(user->becomesFree(before->key, before->modifiers)) << "update " << i;
        }
        before = expected;
    }
    update({ 0, 0, false });
    settle();
    for (int key = 8; key < 256; ++key)
        EXPECT_TRUE(user->becomesFree(static_cast<xcb_keycode_t>(key), XCB_MOD_MASK_ANY)) << "keycode " << key;
}

TEST_F(ShortcutOnX, PausedForRecordingTheKeyIsEverybodysAndComesBackAtOnce)
{
    open();
    constexpr xcb_keycode_t nKey = 57;
    UpdateGlobalNewBrainstormShortcut setting { 45, platform::cmdKey, true };
    update(setting);
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    setting.isEnabled = false;
    update(setting);
    settle();
    EXPECT_TRUE(user->becomesFree(nKey, XCB_MOD_MASK_4));
    setting.isEnabled = true;
    auto const start = std::chrono::steady_clock::now();
    update(setting);
    pumpUntil([&] { return result() == HotKeyResult::Active; });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(10));
    EXPECT_FALSE(user->isFree(nKey, XCB_MOD_MASK_4));
}

} // namespace paneweld_tests
