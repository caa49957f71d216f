#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/appkit/NSScreen.h"
#include "tests/linux/SettingsOwner.h"
#include "tests/support/X11Stage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

using namespace paneweld;
using paneweld_tests::SettingsOwner;

namespace {

constexpr int ordinaryDotsPerInch = 96;
// In points.
constexpr double tallest = 300;

// A panel at work while its user moves the slider in the desktop's settings.
class Scale : public X11Stage {
protected:
    void open(std::string const& type = "brainstorm")
    {
        start(With::WindowManager);
        controller = AppKitController::create(*backend);
        panel = show(WindowIdentifier::create("b1", type, "Panel")->encoded());
        pumpUntil([&] { return panel->alphaValue() >= 1 && isAtRest(); });
        settle();
        place = onlooker->geometry(xid(panel));
    }

    // As many pixels as the frame has points.
    bool isAtRest()
    {
        auto const now = onlooker->geometry(xid(panel));
        auto const factor = 1280 / backend->mainScreen()->frame.width;
        return now.height == std::lround(panel->frame().height * factor)
            && now.width == std::lround(panel->frame().width * factor);
    }

    void openDesktopSettings() { settings = std::make_unique<SettingsOwner>(desktop->display()); }
    // As desktops do that know whole factors only, and as those that know fractions.
    void tellWholeFactor(int factor)
    {
        settings->tell({ .integers = { { "Gdk/WindowScalingFactor", factor }, { "Xft/DPI", -1 } } });
    }
    void tellDotsPerInch(double scale)
    {
        auto const dotsPerInch = static_cast<std::int32_t>(ordinaryDotsPerInch * scale * 1024);
        settings->tell({ .integers = { { "Gdk/WindowScalingFactor", 1 }, { "Xft/DPI", dotsPerInch } } });
    }
    void setResource(double scale)
    {
        auto const text = "Xcursor.size:\t24\nXft.dpi:\t" + std::to_string(ordinaryDotsPerInch * scale) + "\n";
        xcb_change_property(onlooker->wire(), XCB_PROP_MODE_REPLACE, onlooker->root(), XCB_ATOM_RESOURCE_MANAGER,
            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
        onlooker->sync();
    }

    // As a toolkit does that has heard of a scale of 2.
    void doublePixels()
    {
        std::uint32_t const size[] { 1280, 182 };
        xcb_configure_window(toolkit->wire(), xid(panel), XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
        toolkit->sync();
    }

    static void request(double height, bool isAnimated = true)
    {
        BrainstormWindowPreferredHeightDidChange payload { "b1", isAnimated };
        payload.preferredHeight = height;
        payload.maxHeight = tallest;
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, payload.userInfo() });
    }

    // So many points high at this scale, standing where it stood.
    void expectPanel(double height, double scale)
    {
        SCOPED_TRACE(std::to_string(height) + " points at " + std::to_string(scale));
        auto const isThere = [&] {
            auto const now = onlooker->geometry(xid(panel));
            return now.width == std::lround(640 * scale) && now.height == std::lround(height * scale)
                && now.bottom() == place.bottom() && now.doubledCentre() == place.doubledCentre()
                && panel->frame().width == 640 && panel->frame().height == height;
        };
        EXPECT_TRUE(pumpUntil(isThere)) << panel->frame().width << " by " << panel->frame().height;
        EXPECT_DOUBLE_EQ(backend->mainScreen()->frame.width, 1280 / scale);
    }

    // What the window manager lets its user make of it.
    bool isUserHeld(double scale)
    {
        auto const hints = onlooker->words(xid(panel), "WM_NORMAL_HINTS");
        auto const pixels = [&](double points) { return static_cast<std::uint32_t>(std::lround(points * scale)); };
        return hints && (*hints)[5] == pixels(640) && (*hints)[6] == pixels(91) && (*hints)[8] == pixels(tallest);
    }

    // The panel keeps its points, the requests that follow are points too, and none of the steps moves the bottom edge
    // or the centre.
    void expectPointsThroughout(std::function<void(double)> const& tell)
    {
        request(200);
        expectPanel(200, 1);
        request(91, false);
        expectPanel(91, 1);
        onlooker->watch(xid(panel));
        onlooker->clear();
        for (double const scale : { 1.25, 1.5, 2.0, 1.0 }) {
            tell(scale);
            expectPanel(91, scale);
            EXPECT_TRUE(pumpUntil([&] { return isUserHeld(scale); })) << "to no height but those of its request";
            request(200);
            expectPanel(200, scale);
            request(91, false);
            expectPanel(91, scale);
        }
        auto const steps = onlooker->geometries();
        EXPECT_GT(steps.size(), 10u);
        for (auto const& step : steps) {
            ASSERT_EQ(step.bottom(), place.bottom()) << step.width << " by " << step.height;
            ASSERT_EQ(step.doubledCentre(), place.doubledCentre()) << step.width << " by " << step.height;
        }
    }

    std::unique_ptr<SettingsOwner> settings;
    std::shared_ptr<AppKitController> controller;
    std::shared_ptr<platform::NSWindow> panel;
    paneweld_tests::Geometry place;
};

} // namespace

TEST_F(Scale, ThatTheSettingsTellMakesMorePixelsOfAPanelsPoints)
{
    open();
    openDesktopSettings();
    expectPointsThroughout([&](double scale) { tellDotsPerInch(scale); });
}

TEST_F(Scale, OfWholeNumbersMakesMorePixelsOfAPanelsPoints)
{
    open();
    openDesktopSettings();
    for (int const factor : { 2, 1, 2 }) {
        tellWholeFactor(factor);
        expectPanel(91, factor);
        request(150);
        expectPanel(150, factor);
        request(91);
        expectPanel(91, factor);
    }
}

TEST_F(Scale, OfTheResourcesMakesMorePixelsOfAPanelsPoints)
{
    open();
    expectPointsThroughout([&](double scale) { setResource(scale); });
}

TEST_F(Scale, IsThatOfWhoeverTellsTheSettingsNow)
{
    open();
    setResource(1.25);
    expectPanel(91, 1.25);
    // One that comes when the app has been running for a while, and tells nothing at first.
    openDesktopSettings();
    settle();
    expectPanel(91, 1.25);
    tellDotsPerInch(2);
    expectPanel(91, 2);
    // Another one takes its place.
    auto const former = std::move(settings);
    openDesktopSettings();
    tellDotsPerInch(1.5);
    expectPanel(91, 1.5);
    former->tell({ .integers = { { "Xft/DPI", 96 * 2 * 1024 } } });
    settle();
    expectPanel(91, 1.5);
    // It dies, and what the resources say holds again.
    settings.reset();
    expectPanel(91, 1.25);
    openDesktopSettings();
    tellWholeFactor(2);
    expectPanel(91, 2);
    settings->resign();
    expectPanel(91, 1.25);
    setResource(1);
    expectPanel(91, 1);
}

TEST_F(Scale, ThatChangesWhileThePanelGrowsIsThatOfItsEnd)
{
    open();
    int resizes = 0;
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowDidResize(), nullptr, {} }, [&](auto const&) { ++resizes; });
    request(250);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(panel)).height > place.height; }));
    setResource(2);
    expectPanel(250, 2);
    EXPECT_TRUE(pumpUntil([&] { return resizes == 1; }));
    settle();
    expectPanel(250, 2);
}

TEST_F(Scale, KeepsAPanelWhereItsUserHasMovedIt)
{
    open();
    constexpr std::uint32_t moved = 10u | 3u << 8 | 2u << 12;
    onlooker->sendToRoot(xid(panel), "_NET_MOVERESIZE_WINDOW", { moved, 400, 300, 0, 0 });
    place = { 400, 300, 640, 91 };
    ASSERT_TRUE(pumpUntil([&] { return panel->frame().x == 400; }));
    setResource(1.5);
    expectPanel(91, 1.5);
    request(120);
    expectPanel(120, 1.5);
}

TEST_F(Scale, KeepsTheSizeThatAPanelsUserHasGivenIt)
{
    open();
    onlooker->button(1, true);
    settle();
    constexpr std::uint32_t resized = 10u | 0xFu << 8 | 2u << 12;
    place = { 300, 500, 700, 150 };
    onlooker->sendToRoot(xid(panel), "_NET_MOVERESIZE_WINDOW", { resized, 300, 500, 700, 150 });
    ASSERT_TRUE(pumpUntil([&] { return panel->frame().width == 700 && panel->frame().x == 300; }));
    onlooker->button(1, false);
    settle();
    setResource(1.5);
    EXPECT_TRUE(pumpUntil([&] {
        auto const now = onlooker->geometry(xid(panel));
        return now.width == 1050 && now.height == 225 && now.bottom() == place.bottom()
            && now.doubledCentre() == place.doubledCentre();
    }));
    EXPECT_EQ(panel->frame().width, 700);
    EXPECT_EQ(panel->frame().height, 150);
}

TEST_F(Scale, IsAppliedOnceWhereTheToolkitIsFaster)
{
    open();
    // Toolkits know whole factors only and keep the upper left corner, which the window manager may not allow.
    for (double const scale : { 2.0, 1.25 }) {
        doublePixels();
        ASSERT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(panel)).height == 182 && isAtRest(); }));
        setResource(scale);
        expectPanel(91, scale);
        settle();
        expectPanel(91, scale);
        setResource(1);
        expectPanel(91, 1);
    }
}

// The window manager changes its frame, and the window inside a moment later.
TEST_F(Scale, IsAppliedOnceWhereTheFrameIsAheadOfItsWindow)
{
    open();
    onlooker->placeFrameOf(xid(panel), { 0, 618, 1280, 182 });
    ASSERT_TRUE(pumpUntil([&] { return panel->frame().x == 0; }));
    doublePixels();
    ASSERT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(panel)).height == 182 && isAtRest(); }));
    setResource(2);
    expectPanel(91, 2);
}

TEST_F(Scale, IsAppliedOnceWhereTheToolkitIsAtItToo)
{
    open();
    setResource(2);
    doublePixels();
    expectPanel(91, 2);
    settle();
    expectPanel(91, 2);
    setResource(1);
    expectPanel(91, 1);
}

TEST_F(Scale, LeavesAWindowWithAFrameItsPixels)
{
    open("app");
    auto const before = onlooker->geometry(xid(panel));
    setResource(1.25);
    EXPECT_TRUE(pumpUntil([&] { return panel->frame().width == before.width / 1.25; }));
    settle();
    EXPECT_EQ(onlooker->geometry(xid(panel)), before);
}
