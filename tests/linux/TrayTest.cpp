#include "tests/linux/TrayTest.h"

#include "platform/appkit/NSEvent.h"
#include "platform/appkit/NSEventMonitors.h"
#include "tests/linux/DragSource.h"
#include "tests/linux/ForkedTray.h"
#include "tests/linux/PanelStandIn.h"

#include <cstdlib>
#include <poll.h>

namespace paneweld_tests {

using platform::StatusItemPlace;

namespace {

// Strokes thinner than a pixel have a little of the ground in them.
bool isNearly(std::uint32_t colour, std::uint32_t other)
{
    for (int shift = 0; shift < 24; shift += 8) {
        if (std::abs(static_cast<int>(colour >> shift & 0xFF) - static_cast<int>(other >> shift & 0xFF)) > 60)
            return false;
    }
    return true;
}

// How many rows of a part of the screen have a pixel of the colour.
int drawnRows(Client& client, Geometry const& part, std::uint32_t colour)
{
    int rows = 0;
    for (int y = 0; y < part.height; ++y) {
        for (int x = 0; x < part.width; ++x) {
            if (isNearly(client.pixel(part.x + x, part.y + y), colour)) {
                ++rows;
                break;
            }
        }
    }
    return rows;
}

} // namespace

TEST_F(Tray, IsPreferredToThePanelOnTheBus)
{
    startDesktop();
    auto& tray = addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(tray.asked().size(), 1u);
    EXPECT_TRUE(pump([&] { return tray.icons().size() == 1 && tray.isViewable(tray.icons()[0]); }));
    EXPECT_EQ(tray.text(tray.icons()[0], "WM_CLASS"), (std::string("app.quorvel.iosapp\0app.quorvel.iosapp\0", 38)));
    EXPECT_EQ(tray.words(tray.icons()[0], "_XEMBED_INFO"), (std::vector<std::uint32_t> { 0, 1 }));
    EXPECT_TRUE(watcher->items().empty());
    EXPECT_EQ(places, std::vector { StatusItemPlace::Tray });
    // It goes with the item.
    item.reset();
    EXPECT_TRUE(pump([&] { return tray.icons().empty(); }));
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
}

TEST_F(Tray, TakesTheItemOverFromThePanelWhenItComes)
{
    startDesktop();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items().size(), 1u);
    auto& tray = addTray();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(tray.icons().size(), 1u);
    EXPECT_TRUE(pump([&] { return watcher->items().empty(); }));
}

TEST_F(Tray, GivesTheItemBackToThePanelWhenItHasGone)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    trays.clear();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    EXPECT_EQ(places, (std::vector { StatusItemPlace::Tray, StatusItemPlace::Nowhere, StatusItemPlace::Panel }));
    EXPECT_EQ(watcher->items().size(), 1u);
    // What was in the tray is not left on the screen.
    toolkit->sync();
    addTray();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_TRUE(pump([&] { return watcher->items().empty(); }));
}

TEST_F(Tray, ThatStartsAgainHasTheItemAtOnce)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    std::size_t belongings = 0;
    for (int i = 0; i < 100; ++i) {
        trays.clear();
        ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
        auto& tray = addTray({ .wantsAlpha = i % 2 == 0 });
        ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
        EXPECT_EQ(tray.asked().size(), 1u);
        ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
        settle();
        if (i == 1)
            belongings = toolkit->resourceCount(icon());
    }
    EXPECT_EQ(toolkit->resourceCount(icon()), belongings);
    EXPECT_GT(belongings, 0u);
    EXPECT_TRUE(watcher->items().empty());
}

TEST_F(Tray, HandsOverToAnotherWithoutAGap)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    auto& second = addTray({ .bar = { 700, 0, 300, 30 } });
    ASSERT_TRUE(pump([&] { return second.icons().size() == 1; }));
    EXPECT_TRUE(pump([&] { return trays[0]->icons().empty(); }));
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(second.asked().size(), 1u);
    EXPECT_TRUE(watcher->items().empty());
}

TEST_F(Tray, ThatPutsTheItemOutIsAskedAgain)
{
    startDesktop();
    auto& tray = addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    tray.putOut(tray.icons().at(0));
    ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(tray.asked().size(), 2u);
}

TEST_F(Tray, ThatNeverTakesTheItemIsNone)
{
    startDesktop();
    auto& tray = addTray({ .takesIcons = false });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.asked().size() == 1; }));
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    EXPECT_EQ(tray.asked().size(), 1u);
    // The next one is asked again.
    trays.clear();
    addTray();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
}

TEST_F(Tray, ThatNeverKeepsTheItemIsNoneAfterAWhile)
{
    startDesktop();
    auto& tray = addTray();
    startItem();
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
        tray.putOut(tray.icons().at(0));
        ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
    }
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    // Whatever else it says.
    tray.setForeground({ 0xFFFF, 0xFFFF, 0xFFFF });
    settle();
    EXPECT_EQ(tray.asked().size(), 3u);
    EXPECT_EQ(place(), StatusItemPlace::Panel);
}

TEST_F(Tray, LeavesTheProcessAsleep)
{
    startDesktop();
    addTray({ .foreground = { 0, 0, 0 } });
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    settle();
    backend->dispatch();
    pollfd wait { backend->pollableDescriptor(), POLLIN, 0 };
    EXPECT_EQ(poll(&wait, 1, 1000), 0);
}

TEST_F(Tray, ThatDiesBeforeItTakesTheItemIsNone)
{
    startDesktop();
    auto& tray = addTray({ .takesIcons = false });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.asked().size() == 1; }));
    trays.clear();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
}

TEST_F(Tray, ThatMakesBusItemsOutOfWindowsIsLeftAlone)
{
    startDesktop();
    ForkedTray const goBetween(desktop->display(), "xembedsniproxy");
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    settle();
    EXPECT_EQ(watcher->items().size(), 1u);
    EXPECT_EQ(places, std::vector { StatusItemPlace::Panel });
}

TEST_F(Tray, OfAnotherNameTakesTheItem)
{
    startDesktop();
    ForkedTray const tray(desktop->display(), "anytray");
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
}

TEST_F(Tray, TellsThePressesOfTwoButtons)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    for (int const button : { 1, 2, 3, 4, 1 })
        click(toolkit->geometry(icon()), button);
    ASSERT_TRUE(pump([&] { return actions.size() == 3; }));
    settle();
    EXPECT_EQ(actions, (std::vector<std::string> { "left", "right", "left" }));
}

TEST_F(Tray, TellsWhereTheItemWasPressed)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    EXPECT_FALSE(backend->statusBar()->pressedFrame());
    auto const place = toolkit->geometry(icon());
    click(place, 1);
    ASSERT_TRUE(pump([&] { return actions.size() == 1; }));
    platform::Rect const frame { static_cast<double>(place.x), 800.0 - place.bottom(), static_cast<double>(place.width),
        static_cast<double>(place.height) };
    EXPECT_EQ(backend->statusBar()->pressedFrame(), frame);
}

// Of those that are on the bus.
TEST_F(Tray, OrAPanelTellsWhereTheItemWasPressed)
{
    startDesktop();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    PanelStandIn panel(bus->address(), watcher->items().at(0));
    auto const press = [&](char const* method, int x, int y) {
        auto answer = panel.askItem(method, "ii", x, y);
        pump([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        settle();
        return backend->statusBar()->pressedFrame();
    };
    EXPECT_EQ(press("Activate", 300, 20), (platform::Rect { 300, 780, 0, 0 }));
    EXPECT_EQ(press("ContextMenu", 310, 20), (platform::Rect { 310, 780, 0, 0 }));
    // What some say who do not know, and what cannot be.
    EXPECT_EQ(press("Activate", 0, 0), std::nullopt);
    press("Activate", 300, 20);
    EXPECT_EQ(press("Activate", 5000, 20), std::nullopt);
    EXPECT_EQ(actions.size(), 5u);
}

TEST_F(Tray, HasAMenuOnTheRightButton)
{
    ASSERT_NO_FATAL_FAILURE(pressForMenu());
    constexpr xcb_keycode_t downKey = 116, returnKey = 36;
    strike(downKey);
    strike(downKey);
    strike(returnKey);
    ASSERT_TRUE(pump([&] { return actions.size() == 2; }));
    EXPECT_EQ(actions[1], "new");
    EXPECT_TRUE(pump([&] { return user->canGrabKeyboard(); }));
}

TEST_F(Tray, HasAMenuWhoseKeysAreNobodyElses)
{
    ASSERT_NO_FATAL_FAILURE(pressForMenu());
    // What a panel of ours closes with, while it has the keyboard.
    int escapes = 0;
    auto const monitor = backend->eventMonitors().addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, { platform::keyCodeEscape }, [&](platform::NSEvent const&) {
            ++escapes;
            return std::optional<platform::NSEvent>();
        });
    strike(*evdevKeycode(platform::keyCodeEscape));
    EXPECT_TRUE(pump([&] { return user->canGrabKeyboard(); }));
    settle();
    EXPECT_EQ(escapes, 0);
    EXPECT_EQ(actions, std::vector<std::string> { "right" });
}

TEST_F(Tray, TakesTheMenuWithIt)
{
    ASSERT_NO_FATAL_FAILURE(pressForMenu());
    trays.clear();
    ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
    EXPECT_TRUE(pump([&] { return user->canGrabKeyboard(); }));
}

TEST_F(Tray, LosesTheMenuWithTheItem)
{
    ASSERT_NO_FATAL_FAILURE(pressForMenu());
    item.reset();
    EXPECT_TRUE(pump([&] { return user->canGrabKeyboard(); }));
}

TEST_F(Tray, TakesDrops)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    DragSource source(desktop->display());
    source.offers = { { "text/uri-list", "file:///tmp/b\r\nfile:///tmp/a\r\n" } };
    source.enter(icon());
    source.position(icon());
    auto const look = [&] {
        source.look();
        return true;
    };
    ASSERT_TRUE(pump([&] { return look() && source.statuses.size() == 1; }));
    source.drop(icon());
    ASSERT_TRUE(pump([&] { return look() && source.finishes.size() == 1; }));
    EXPECT_EQ(source.finishes[0].flags, 1u);
    EXPECT_EQ(dropped, (std::vector<std::string> { "file:///tmp/b", "file:///tmp/a" }));
}

TEST_F(Tray, SaysWhichColourTheIconHas)
{
    startDesktop();
    auto& tray = addTray({ .foreground = { 0xFFFF, 0x8080, 0x0000 } });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.icons().size() == 1; }));
    auto const hasColour = [&](std::uint32_t colour) { return drawnRows(*toolkit, tray.iconPlace(), colour) > 0; };
    ASSERT_TRUE(pump([&] { return hasColour(0xFF8000); }));
    // Where nothing is drawn the bar is seen.
    auto const place = tray.iconPlace();
    EXPECT_EQ(toolkit->pixel(place.x, place.y), 0x204080u);
    tray.setForeground({ 0x1010, 0xFFFF, 0x2020 });
    ASSERT_TRUE(pump([&] { return hasColour(0x10FF20); }));
    EXPECT_FALSE(hasColour(0xFF8000));
}

TEST_F(Tray, MayWantIconsWithAnAlphaChannel)
{
    startDesktop();
    auto& tray = addTray({ .wantsAlpha = true, .foreground = { 0xFFFF, 0xFFFF, 0xFFFF } });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.icons().size() == 1; }));
    auto const icon = tray.icons()[0];
    // The stem in the middle.
    auto const hasStem = [&] {
        for (int y = 0; y < 30; ++y) {
            if (tray.iconPixel(icon, 15, y) == 0xFFFFFFFF)
                return true;
        }
        return false;
    };
    EXPECT_TRUE(pump(hasStem));
    EXPECT_EQ(tray.iconPixel(icon, 0, 0), 0u);
}

TEST_F(Tray, GivesTheIconItsSize)
{
    startDesktop();
    auto& tray = addTray({ .foreground = { 0, 0, 0 }, .width = 48, .height = 24 });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.icons().size() == 1; }));
    auto const icon = tray.icons()[0];
    // As wide as the tray is high: what it asks for.
    EXPECT_TRUE(pump([&] {
        auto const hints = tray.words(icon, "WM_NORMAL_HINTS");
        return hints && hints->at(5) == 24 && hints->at(6) == 24;
    }));
    tray.setSize(icon, 64, 64);
    auto const rows = [&] { return drawnRows(*toolkit, tray.iconPlace(), 0); };
    // The bar is 30 pixels high.
    EXPECT_TRUE(pump([&] { return rows() > 20; }));
    tray.setSize(icon, 16, 16);
    EXPECT_TRUE(pump([&] { return rows() > 6 && rows() <= 16; }));
}

TEST_F(Tray, MayGoWithTheServer)
{
    startDesktop();
    addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    trays.clear();
    desktop->endServer();
    EXPECT_TRUE(pumpWithoutServerUntil([&] { return place() == StatusItemPlace::Panel; }));
}

} // namespace paneweld_tests
