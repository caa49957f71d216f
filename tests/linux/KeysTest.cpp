#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"
#include "platform/appkit/NSEventMonitors.h"

#include <algorithm>

namespace paneweld_tests {

using platform::EventMask;
using platform::NSEvent;

namespace {

// Key codes of the usual keyboard of X.
constexpr xcb_keycode_t escapeKey = 9;
constexpr xcb_keycode_t letterKey = 38;
constexpr xcb_keycode_t shiftKey = 50;
constexpr xcb_keycode_t locks[] = { 66, 77, 78 }; // Caps, Num, Scroll

} // namespace

class Keys : public LinuxTest {
protected:
    // Watches Escape and consumes it, as the plug-in does for a panel that is key.
    void monitor()
    {
        token = backend->eventMonitors().addLocalMonitorForEventsMatchingMask(
            EventMask::KeyDown, { platform::keyCodeEscape },
            [this](NSEvent const& event) {
                events.push_back(event);
                return std::nullopt;
            },
            platform::NSEventMonitors::Consumption::Always);
        ASSERT_TRUE(token);
        settle();
    }

    // Watches Escape and decides about each one.
    void monitorPerEvent(bool consumes)
    {
        token = backend->eventMonitors().addLocalMonitorForEventsMatchingMask(
            EventMask::KeyDown, { platform::keyCodeEscape }, [this, consumes](NSEvent const& event) {
                events.push_back(event);
                return consumes ? std::nullopt : std::optional(event);
            });
        ASSERT_TRUE(token);
        settle();
    }

    void strike(xcb_keycode_t key)
    {
        onlooker->press(key);
        settle();
        onlooker->release(key);
        settle();
    }

    void tap(xcb_keycode_t key)
    {
        onlooker->press(key);
        onlooker->release(key);
    }

    // Memory of the server that had something in it a moment ago, and that it may still believe in: no address now.
    void writeOverFreedMemory(xcb_window_t window)
    {
        constexpr xcb_atom_t lastPredefined = 68;
        constexpr std::size_t step = 16;
        for (xcb_atom_t atom = 1; atom <= lastPredefined; ++atom) {
            std::string const bytes(atom * step, '\xA5');
            xcb_change_property(toolkit->wire(), XCB_PROP_MODE_REPLACE, window, atom, XCB_ATOM_STRING, 8,
                static_cast<std::uint32_t>(bytes.size()), bytes.data());
        }
        toolkit->sync();
    }

    // Whether somebody else could have the key on this window.
    bool isFree(xcb_window_t window, xcb_keycode_t key) { return onlooker->isKeyFree(window, key, XCB_MOD_MASK_ANY); }

    std::shared_ptr<platform::NSWindow> showKeyWindow(std::string const& title)
    {
        auto const shown = show({ .title = title });
        pumpUntil([&] { return shown->isKeyWindow(); });
        return shown;
    }

    std::vector<NSEvent> events;
    std::shared_ptr<platform::NSEventMonitor> token;
};

TEST_F(Keys, EscapeIsConsumedOnlyWhileSomebodyWatches)
{
    start(With::WindowManager);
    auto const shown = showKeyWindow("panel");
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return toolkit->releasedKeys.size() == 1; }));
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(isFree(xid(shown), escapeKey));

    monitor();
    EXPECT_FALSE(isFree(xid(shown), escapeKey));
    EXPECT_TRUE(isFree(xid(shown), letterKey));
    toolkit->pressedKeys.clear();
    toolkit->releasedKeys.clear();
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; }));
    EXPECT_EQ(events[0].keyCode, platform::keyCodeEscape);
    EXPECT_EQ(events[0].type, platform::EventType::KeyDown);
    EXPECT_EQ(events[0].window.lock(), shown);
    // Other keys pass, before and after.
    strike(letterKey);
    ASSERT_TRUE(pumpUntil([&] { return toolkit->releasedKeys.size() == 1; }));
    EXPECT_EQ(toolkit->pressedKeys, (std::vector<xcb_keycode_t> { letterKey }));
    EXPECT_EQ(toolkit->releasedKeys, (std::vector<xcb_keycode_t> { letterKey }));

    backend->eventMonitors().removeMonitor(token);
    settle();
    EXPECT_TRUE(pumpUntil([&] { return isFree(xid(shown), escapeKey); }));
    strike(escapeKey);
    EXPECT_TRUE(pumpUntil([&] { return toolkit->pressedKeys.back() == escapeKey; }));
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(Keys, LocksDoNotMatterAndModifiersAreTold)
{
    start(With::WindowManager);
    showKeyWindow("panel");
    monitor();
    for (int state = 0; state < 8; ++state) {
        for (int i = 0; i < 3; ++i) {
            if (state & 1 << i)
                strike(locks[i]);
        }
        events.clear();
        strike(escapeKey);
        ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; })) << "lock state " << state;
        for (int i = 0; i < 3; ++i) {
            if (state & 1 << i)
                strike(locks[i]);
        }
    }
    onlooker->press(shiftKey);
    strike(escapeKey);
    onlooker->release(shiftKey);
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events[0].modifierFlags.rawValue & 0x1E0000, 0u);
    EXPECT_EQ(events[1].modifierFlags.rawValue & 0x1E0000, 0x20000u);
    EXPECT_EQ(std::count(toolkit->pressedKeys.begin(), toolkit->pressedKeys.end(), escapeKey), 0);
}

TEST_F(Keys, AnEventThatIsGivenOnIsReplayedWhole)
{
    start(With::WindowManager);
    showKeyWindow("panel");
    monitorPerEvent(false);
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return toolkit->releasedKeys.size() == 1; }));
    EXPECT_EQ(events.size(), 1u);
    EXPECT_EQ(toolkit->pressedKeys, (std::vector<xcb_keycode_t> { escapeKey }));
}

TEST_F(Keys, WhileTextIsComposedTheKeyIsTheInputMethods)
{
    start(With::WindowManager);
    showKeyWindow("panel");
    monitor();
    backend->setComposingText(true);
    settle();
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return toolkit->releasedKeys.size() == 1; }));
    EXPECT_TRUE(events.empty());
    backend->setComposingText(false);
    settle();
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; }));
    EXPECT_EQ(toolkit->pressedKeys.size(), 1u);
}

TEST_F(Keys, TheReleaseAndTheRepetitionsGoNowhereEvenWhenTheWindowGoes)
{
    start(With::WindowManager);
    auto const other = showKeyWindow("other");
    auto const panel = showKeyWindow("panel");
    token = backend->eventMonitors().addLocalMonitorForEventsMatchingMask(
        EventMask::KeyDown, { platform::keyCodeEscape }, [&](NSEvent const& event) -> std::optional<NSEvent> {
            events.push_back(event);
            panel->close();
            return std::nullopt;
        });
    settle();
    onlooker->press(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return count("close panel") == 1 && other->isKeyWindow(); }));
    backend->eventMonitors().removeMonitor(token);
    // A letter, struck while the key is still held, is not lost.
    strike(letterKey);
    onlooker->release(escapeKey);
    strike(letterKey);
    ASSERT_TRUE(pumpUntil(
        [&] { return std::count(toolkit->releasedKeys.begin(), toolkit->releasedKeys.end(), letterKey) == 2; }));
    EXPECT_EQ(events.size(), 1u);
    EXPECT_EQ(std::count(toolkit->pressedKeys.begin(), toolkit->pressedKeys.end(), escapeKey), 0);
    EXPECT_EQ(std::count(toolkit->pressedKeys.begin(), toolkit->pressedKeys.end(), letterKey), 2);
}

TEST_F(Keys, TheKeyboardIsFreeAfterTheKeyWasLetGo)
{
    start(With::WindowManager);
    showKeyWindow("panel");
    monitor();
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; }));
    auto const cookie = xcb_grab_keyboard(
        onlooker->wire(), 0, onlooker->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    auto* const reply = xcb_grab_keyboard_reply(onlooker->wire(), cookie, nullptr);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, XCB_GRAB_STATUS_SUCCESS);
    free(reply);
    EXPECT_TRUE(toolkit->releasedKeys.empty());
}

TEST_F(Keys, ABusyHostKeepsNobodyElseFromTyping)
{
    start(With::WindowManager);
    auto const other = showKeyWindow("other");
    showKeyWindow("panel");
    monitor();
    // The loop stands still from here on.
    tap(escapeKey);
    onlooker->sendToRoot(xid(other), "_NET_ACTIVE_WINDOW", { 2, XCB_CURRENT_TIME, XCB_WINDOW_NONE });
    ASSERT_TRUE(onlooker->waitUntil([&] { return onlooker->activeWindow() == xid(other); }));
    tap(letterKey);
    EXPECT_TRUE(onlooker->waitUntil([&] {
        toolkit->handleEvents();
        return toolkit->releasedKeys == std::vector<xcb_keycode_t> { letterKey };
    }));
    EXPECT_TRUE(events.empty());
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; }));
    // What was typed while the key went unheard was not for us either.
    tap(letterKey);
    ASSERT_TRUE(pumpUntil([&] { return toolkit->releasedKeys.size() == 2; }));
    EXPECT_EQ(toolkit->pressedKeys, (std::vector<xcb_keycode_t> { letterKey, letterKey }));
}

TEST_F(Keys, AWindowMayGoWhileKeysAreOnTheirWay)
{
    start(With::WindowManager);
    auto const other = showKeyWindow("other");
    auto const heap = toolkit->make({ .isOverrideRedirect = true });
    for (int i = 0; i < 20; ++i) {
        auto const panel = showKeyWindow("panel");
        auto const place = onlooker->geometry(xid(panel));
        onlooker->movePointer(place.x + 50, place.y + 50);
        monitor();
        // The user is impatient, the host is busy with something else and then closes the panel by itself.
        tap(escapeKey);
        tap(escapeKey);
        toolkit->destroy(xid(panel));
        writeOverFreedMemory(heap);
        ASSERT_TRUE(pumpUntil([&] { return count("close panel") == i + 1 && other->isKeyWindow(); })) << i;
        strike(escapeKey);
        backend->eventMonitors().removeMonitor(token);
        tap(letterKey);
        ASSERT_TRUE(pumpUntil([&] {
            return std::count(toolkit->releasedKeys.begin(), toolkit->releasedKeys.end(), letterKey) == i + 1;
        })) << i;
    }
}

TEST_F(Keys, AWindowThatComesLaterIsWatchedToo)
{
    start(With::WindowManager);
    showKeyWindow("first");
    monitor();
    auto const later = showKeyWindow("later");
    settle();
    strike(escapeKey);
    ASSERT_TRUE(pumpUntil([&] { return events.size() == 1; }));
    EXPECT_EQ(events[0].window.lock(), later);
}

TEST_F(Keys, OneWindowIsKeyAndTheOtherResignsFirst)
{
    start(With::WindowManager);
    auto const first = showKeyWindow("first");
    auto const second = showKeyWindow("second");
    EXPECT_FALSE(first->isKeyWindow());
    news.clear();
    first->makeKeyAndOrderFront();
    ASSERT_TRUE(pumpUntil([&] { return first->isKeyWindow(); }));
    EXPECT_EQ(news, (std::vector<std::string> { "resign second", "key first" }));
    EXPECT_TRUE(pumpUntil([&] { return onlooker->isAbove(xid(first), xid(second)); }));
    EXPECT_EQ(backend->application().keyWindow(), first);
}

TEST_F(Keys, AWindowIsReportedBeforeItIsKey)
{
    start(With::WindowManager);
    for (int i = 0; i < 10; ++i) {
        news.clear();
        auto const shown = showKeyWindow("ordered");
        auto const visible = std::find(news.begin(), news.end(), "visible ordered");
        auto const key = std::find(news.begin(), news.end(), "key ordered");
        EXPECT_LT(visible - news.begin(), key - news.begin());
        toolkit->destroy(xid(shown));
        ASSERT_TRUE(pumpUntil([&] { return count("close ordered") == 1; }));
    }
}

TEST_F(Keys, WithoutAWindowManagerTheFocusTells)
{
    start(With::Nothing);
    auto const first = show({ .title = "first" });
    auto const second = show({ .title = "second" });
    first->makeKeyAndOrderFront();
    ASSERT_TRUE(pumpUntil([&] { return first->isKeyWindow(); }));
    second->makeKeyAndOrderFront();
    ASSERT_TRUE(pumpUntil([&] { return second->isKeyWindow(); }));
    EXPECT_EQ(count("resign first"), 1);
    EXPECT_TRUE(onlooker->isAbove(xid(second), xid(first)));
}

} // namespace paneweld_tests
