#include "tests/linux/DragProgram.h"
#include "tests/linux/RealPanel.h"
#include "tests/linux/Screenshot.h"
#include "tests/linux/TrayFixture.h"

// The item in trays that people have, used by a hand that nobody can tell from a person's.
namespace paneweld_tests {

using platform::StatusItemPlace;
using Actions = std::vector<std::string>;

class RealTrayTest : public TrayFixture, public ::testing::WithParamInterface<RealPanel::Program> {
protected:
    void start()
    {
        panel = std::make_unique<RealPanel>(GetParam());
        // Panels keep their settings in services.
        startDesktop(SessionBus::Services::Installed);
        desktop->startWindowManager();
        panel->startAsTray(desktop->display());
        fillMenu();
        startItem();
        ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
        ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    }
    void keep(std::string const& what) { Screenshot(*toolkit).keep("tray-" + panel->name() + "-" + what); }
    // Trays move their icons about when they start.
    Geometry iconAtRest()
    {
        Geometry last;
        int looks = 0;
        pump([&] {
            auto const now = toolkit->geometry(icon());
            looks = now == last ? looks + 1 : 0;
            last = now;
            return looks > 20;
        });
        return last;
    }
    void dragFiles(DragProgram::Kind kind)
    {
        DragProgram program(*toolkit, kind, 1, { "/tmp/z \xC3\xBC 100%.txt", "/tmp/a\n#1?" });
        ASSERT_TRUE(pump([&] { return program.isReady(); }));
        auto const place = iconAtRest();
        dragsEntered = 0;
        dropped.reset();
        program.press();
        int movesInside = 0;
        ASSERT_TRUE(pump([&] {
            program.moveTowards(place);
            return dragsEntered > 0 && ++movesInside > 20;
        }));
        keep(kind == DragProgram::Kind::Gtk ? "3-drag-gtk" : "4-drag-qt");
        program.release();
        ASSERT_TRUE(pump([&] { return dropped.has_value(); }));
        EXPECT_EQ(*dropped, (Actions { "file:///tmp/z%20%C3%BC%20100%25.txt", "file:///tmp/a%0A%231%3F" }));
    }

    std::unique_ptr<RealPanel> panel;
};

TEST_P(RealTrayTest, ShowsTheItemWithItsClicksAndItsMenu)
{
    start();
    auto const place = iconAtRest();
    EXPECT_GE(place.width, 16);
    EXPECT_GE(place.height, 16);
    keep("1-shown");
    click(place, 1);
    ASSERT_TRUE(pump([&] { return actions.size() == 1; }));
    click(place, 3);
    ASSERT_TRUE(pump([&] { return openMenu() != XCB_WINDOW_NONE; }));
    constexpr xcb_keycode_t downKey = 116, returnKey = 36;
    strike(downKey);
    strike(downKey);
    pumpFor(std::chrono::milliseconds(100));
    keep("2-menu");
    strike(returnKey);
    ASSERT_TRUE(pump([&] { return actions.size() == 3; }));
    settle();
    EXPECT_EQ(actions, (Actions { "left", "right", "new" }));
    EXPECT_EQ(openMenu(), XCB_WINDOW_NONE);
}

TEST_P(RealTrayTest, HasTheItemAgainWhenItStartsAgain)
{
    start();
    panel->end();
    ASSERT_TRUE(pump([&] { return !places.empty() && places.back() != StatusItemPlace::Tray; }));
    panel->startAsTray(desktop->display());
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
    click(iconAtRest(), 1);
    ASSERT_TRUE(pump([&] { return actions.size() == 1; }));
    settle();
    EXPECT_EQ(actions, Actions { "left" });
}

INSTANTIATE_TEST_SUITE_P(All, RealTrayTest,
    ::testing::Values(RealPanel::trayer(), RealPanel::tint2(), RealPanel::xfce()),
    [](auto const& program) { return program.param.name; });

// Tint2 keeps what is dragged over it for itself.
class RealTrayDropTest : public RealTrayTest { };

TEST_P(RealTrayDropTest, LetsFilesThroughFromGtk)
{
    start();
    dragFiles(DragProgram::Kind::Gtk);
}

TEST_P(RealTrayDropTest, LetsFilesThroughFromQt)
{
    start();
    dragFiles(DragProgram::Kind::Qt);
}

INSTANTIATE_TEST_SUITE_P(All, RealTrayDropTest, ::testing::Values(RealPanel::trayer(), RealPanel::xfce()),
    [](auto const& program) { return program.param.name; });

} // namespace paneweld_tests
