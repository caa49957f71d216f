#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/XSettings.h"
#include "tests/linux/LinuxTest.h"
#include "tests/support/RunOptions.h"

#include "platform/Platform.h"
#include "platform/appkit/NSScreen.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <poll.h>
#include <random>

namespace paneweld_tests {

using backends::PixelRect;
using backends::PixelScale;
using platform::Display;
using platform::NSScreen;
using platform::Rect;

class Screen : public LinuxTest {
protected:
    // As a user would part a screen: size, place, and a star before the name of the primary one.
    static void addMonitor(std::string const& name, std::string const& place)
    {
        ChildProcess xrandr({ "xrandr", "--setmonitor", name, place, "none" });
        while (xrandr.isRunning())
            poll(nullptr, 0, 5);
    }

    // What a desktop has at an edge of the screen (EWMH, _NET_WM_STRUT_PARTIAL).
    xcb_window_t makeDock(Geometry const& place, std::vector<std::uint32_t> const& strut)
    {
        auto const dock = toolkit->make({ .geometry = place, .title = "dock" });
        toolkit->setWords(dock, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, { toolkit->atom("_NET_WM_WINDOW_TYPE_DOCK") });
        toolkit->setWords(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, strut);
        toolkit->map(dock);
        return dock;
    }

    void setRootText(std::string const& property, std::string const& text)
    {
        xcb_change_property(onlooker->wire(), XCB_PROP_MODE_REPLACE, onlooker->root(), onlooker->atom(property),
            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
        onlooker->sync();
    }
};

TEST_F(Screen, IsTheWholeDesktopWhereNobodySaysMore)
{
    start(With::Nothing);
    EXPECT_EQ(backend->mainScreen(), (NSScreen { { 0, 0, 1280, 800 }, { 0, 0, 1280, 800 } }));
    EXPECT_EQ(backend->windowReach(), backends::WindowReach::X11);
}

TEST_F(Screen, LeavesThePanelsTheirPlace)
{
    start(With::WindowManager);
    EXPECT_EQ(backend->mainScreen()->visibleFrame, (Rect { 0, 0, 1280, 800 }));
    makeDock({ 0, 770, 1280, 30 }, { 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 1279 });
    ASSERT_TRUE(pumpUntil([&] { return backend->mainScreen()->visibleFrame == Rect { 0, 30, 1280, 770 }; }));
    EXPECT_EQ(backend->mainScreen()->frame, (Rect { 0, 0, 1280, 800 }));
}

TEST_F(Screen, IsTheOneOfTheKeyWindowElseThePrimary)
{
    start(With::WindowManager);
    addMonitor("left", "640/160x800/200+0+0");
    addMonitor("*right", "640/160x600/150+640+0");
    NSScreen const left { { 0, 0, 640, 800 }, { 0, 0, 640, 800 } };
    NSScreen const right { { 640, 200, 640, 600 }, { 640, 200, 640, 600 } };
    ASSERT_TRUE(pumpUntil([&] { return backend->mainScreen() == right; }));
    auto const shown = show({ .title = "key" });
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    shown->setFrame({ 100, 100, 300, 300 }, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return backend->mainScreen() == left; }));
    shown->setFrame({ 600, 100, 300, 300 }, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return backend->mainScreen() == right; }));
    // Each monitor's own area, where the window manager tells it.
    toolkit->setWords(toolkit->root(), "_GTK_WORKAREAS_D0", XCB_ATOM_CARDINAL, { 0, 24, 640, 776, 640, 0, 640, 550 });
    toolkit->setWords(toolkit->root(), "_NET_WORKAREA", XCB_ATOM_CARDINAL, { 0, 24, 1280, 526 });
    EXPECT_TRUE(pumpUntil([&] { return backend->mainScreen()->visibleFrame == Rect { 640, 250, 640, 550 }; }));
    // Nonsense is cut to what a screen can have.
    toolkit->setWords(toolkit->root(), "_GTK_WORKAREAS_D0", XCB_ATOM_CARDINAL,
        { 0x80000000, 24, 0x7FFFFFFF, 776, 640, 0, 0x7FFFFFFF, 0x7FFFFFFF });
    EXPECT_TRUE(pumpUntil([&] { return backend->mainScreen()->visibleFrame == Rect { 640, 200, 640, 600 }; }));
}

// Window managers that tell the free part of each monitor, and one that tells the whole screen's alone.
class Panels : public Screen, public ::testing::WithParamInterface<std::vector<std::string>> { };

TEST_P(Panels, OnDifferentEdgesLeaveEachMonitorItsPlaceAlsoWhenTheyComeLater)
{
    start(With::Nothing);
    addMonitor("*left", "640/160x800/200+0+0");
    addMonitor("right", "640/160x800/200+640+0");
    startWindowManager(GetParam());
    auto const shown = show({ .title = "key" });
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    Rect const onLeft { 100, 100, 300, 300 };
    Rect const onRight { 740, 100, 300, 300 };
    auto const free = [&] { return backend->mainScreen()->visibleFrame; };
    shown->setFrame(onLeft, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 0, 0, 640, 800 }; }));
    // One at the lower edge of the right monitor, which takes nothing from the left one.
    makeDock({ 640, 770, 640, 30 }, { 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 640, 1279 });
    shown->setFrame(onRight, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 640, 30, 640, 770 }; }));
    shown->setFrame(onLeft, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 0, 0, 640, 800 }; }));
    // One at the upper edge and one at the side of the left monitor, that come later.
    makeDock({ 0, 0, 640, 24 }, { 0, 0, 24, 0, 0, 0, 0, 0, 0, 639, 0, 0 });
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 0, 0, 640, 776 }; }));
    auto const atSide = makeDock({ 0, 24, 48, 776 }, { 48, 0, 0, 0, 24, 799, 0, 0, 0, 0, 0, 0 });
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 48, 0, 592, 776 }; }));
    shown->setFrame(onRight, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 640, 30, 640, 770 }; }));
    toolkit->destroy(atSide);
    shown->setFrame(onLeft, Display::Yes);
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 0, 0, 640, 776 }; }));
}

INSTANTIATE_TEST_SUITE_P(Under, Panels,
    ::testing::Values(std::vector<std::string> { "openbox", "--sm-disable" },
        std::vector<std::string> { "xfwm4", "--compositor=off" },
        std::vector<std::string> { "metacity", "--sm-disable" }),
    [](auto const& under) { return under.param.front(); });

TEST_F(Screen, AnEdgeOfNonsenseTakesNothing)
{
    start(With::Nothing);
    addMonitor("*left", "640/160x800/200+0+0");
    addMonitor("right", "640/160x800/200+640+0");
    desktop->startWindowManager();
    auto const free = [&] { return backend->mainScreen()->visibleFrame; };
    constexpr std::uint32_t least = 0x80000000, most = 0xFFFFFFFF;
    auto const nonsense = makeDock({ 0, 0, 10, 10 }, { least, most, most, least, 0, most, 0, most, 0, most, 0, most });
    // Heard of after the nonsense.
    makeDock({ 0, 770, 640, 30 }, { 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 639 });
    EXPECT_TRUE(pumpUntil([&] { return free() == Rect { 0, 30, 640, 770 }; }));
    toolkit->destroy(nonsense);
    settle();
    EXPECT_EQ(free(), (Rect { 0, 30, 640, 770 }));
}

TEST_F(Screen, PointsFollowTheScale)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "scaled" });
    for (double const scale : { 1.25, 1.5, 2.0, 1.0 }) {
        setRootText("RESOURCE_MANAGER", "Xft.antialias:\t1\nXft.dpi:\t" + std::to_string(96 * scale) + "\n");
        ASSERT_TRUE(pumpUntil([&] { return backend->mainScreen()->frame.width == 1280 / scale; }));
        EXPECT_EQ(backend->mainScreen()->frame.height, 800 / scale);
        shown->setFrame({ 20, 84, 600, 91 }, Display::Yes);
        EXPECT_EQ(shown->frame(), (Rect { 20, 84, 600, 91 }));
        Geometry const wanted { static_cast<int>(20 * scale),
            static_cast<int>(800 - std::lround(84 * scale) - std::lround(91 * scale)),
            static_cast<int>(std::lround(600 * scale)), static_cast<int>(std::lround(91 * scale)) };
        EXPECT_TRUE(pumpUntil([&] { return onlooker->geometry(xid(shown)) == wanted; })) << scale;
        settle();
        EXPECT_EQ(shown->frame(), (Rect { 20, 84, 600, 91 }));
    }
}

TEST(Settings, GiveTheScale)
{
    using backends::scaleFactor;
    EXPECT_EQ(scaleFactor({}, ""), 1);
    EXPECT_EQ(scaleFactor({}, "Xft.dpi: 192\n"), 2);
    EXPECT_EQ(scaleFactor({}, "Xft.dpi2: 192\n"), 1);
    EXPECT_EQ(scaleFactor({}, "Xcursor.size: 24\nXft.dpi:\t120"), 1.25);
    EXPECT_EQ(scaleFactor({}, "Xft.dpi: 48\n"), 1);
    EXPECT_EQ(scaleFactor({}, "Xft.dpi: nonsense\n"), 1);
    EXPECT_EQ(scaleFactor({ { { "Xft/DPI", 144 * 1024 } } }, "Xft.dpi: 96\n"), 1.5);
    EXPECT_EQ(scaleFactor({ { { "Xft/DPI", -1 } } }, ""), 1);
    EXPECT_EQ(scaleFactor({ { { "Xft/DPI", 192 * 1024 }, { "Gdk/WindowScalingFactor", 2 } } }, ""), 2);
    EXPECT_EQ(scaleFactor({ { { "Xft/DPI", 144 * 1024 }, { "Gdk/WindowScalingFactor", 1 } } }, ""), 1.5);
}

TEST(Settings, AreReadInBothByteOrdersAndRefusedWhenCutOff)
{
    auto const word = [](std::uint32_t value, std::size_t size, bool isBig) {
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * (isBig ? size - 1 - i : i));
        return bytes;
    };
    for (bool const isBig : { false, true }) {
        std::string bytes { isBig ? '\1' : '\0', 0, 0, 0 };
        bytes += word(7, 4, isBig) + word(3, 4, isBig);
        bytes += std::string(1, 1) + '\0' + word(5, 2, isBig) + std::string("Theme\0\0\0", 8) + word(1, 4, isBig)
            + word(3, 4, isBig) + std::string("abc\0", 4);
        bytes += std::string(1, 2) + '\0' + word(4, 2, isBig) + "Tint" + word(1, 4, isBig) + std::string(8, 'c');
        bytes += std::string(1, 0) + '\0' + word(7, 2, isBig) + std::string("Xft/DPI\0", 8) + word(1, 4, isBig)
            + word(98304, 4, isBig);
        auto const settings = backends::settingsIn(bytes);
        ASSERT_TRUE(settings);
        EXPECT_EQ(settings->integers.size(), 1u);
        EXPECT_EQ(settings->integers.at("Xft/DPI"), 98304);
        EXPECT_EQ(settings->texts.size(), 1u);
        EXPECT_EQ(settings->text("Theme"), "abc");
        EXPECT_EQ(settings->text("Tint"), "");
        for (std::size_t length = 0; length < bytes.size(); ++length)
            EXPECT_FALSE(backends::settingsIn(std::string_view(bytes).substr(0, length))) << length;
    }
    EXPECT_FALSE(backends::settingsIn(""));
}

TEST(Pixels, KeepTheBottomAndTheCentreForEveryScale)
{
    std::mt19937 random(paneweld_tests::testSeed());
    std::uniform_real_distribution<double> place(0, 900);
    std::uniform_real_distribution<double> length(44, 1300);
    for (double const factor : { 1.0, 1.25, 1.5, 1.75, 2.0, 3.0 }) {
        PixelScale const scale { factor, 1600 };
        for (int i = 0; i < 2000; ++i) {
            Rect const from { place(random), place(random), length(random), length(random) };
            Rect const to { from.midX() - 320, from.y, 640, length(random) };
            auto const end = scale.toPixels(to);
            EXPECT_EQ(end.bottom(), 1600 - std::lround(from.y * factor));
            EXPECT_EQ(end.width, std::lround(640 * factor));
            EXPECT_EQ(end.height, std::lround(to.height * factor));
            // Every step on the way has the same bottom and the very centre of the end.
            for (double const share : { 0.1, 0.5, 0.9 }) {
                auto const width = from.width + (to.width - from.width) * share;
                auto const height = from.height + (to.height - from.height) * share;
                auto const step = scale.toPixels({ from.midX() - width / 2, from.y, width, height }, end);
                ASSERT_EQ(step.bottom(), end.bottom());
                ASSERT_EQ(2 * step.x + step.width, 2 * end.x + end.width);
                ASSERT_LE(std::abs(step.width - width * factor), 1.5);
            }
        }
    }
}

TEST(Pixels, GoThereAndBack)
{
    PixelScale const scale { 2, 800 };
    PixelRect const pixels { 10, 20, 300, 200 };
    EXPECT_EQ(scale.toPoints(pixels), (Rect { 5, 290, 150, 100 }));
    EXPECT_EQ(scale.toPixels(scale.toPoints(pixels)), pixels);
    // Neither numbers nor sizes that the server would refuse.
    EXPECT_EQ(scale.toPixels({ 0, 0, 0, 0 }).width, 1);
    EXPECT_EQ(scale.toPixels({ 0, 0, -5, -5 }).height, 1);
    for (double const far : { 32768.0, 65536.0, 1e6, 1e300 }) {
        auto const rect = scale.toPixels({ far, -far, far, far });
        auto const toTheLeft = scale.toPixels({ -far, far, far, far }, rect);
        for (auto const number :
            { rect.x, rect.y, rect.width, rect.height, toTheLeft.x, toTheLeft.y, toTheLeft.width, toTheLeft.height })
            EXPECT_EQ(number, static_cast<std::int16_t>(number)) << far;
        EXPECT_GT(std::min(rect.width, rect.height), 0);
    }
}

} // namespace paneweld_tests
