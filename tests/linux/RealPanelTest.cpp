#include "tests/linux/RealPanel.h"
#include "platform/appkit/NSImage.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/Screenshot.h"
#include "tests/linux/StatusItemFixture.h"

#include <algorithm>

namespace paneweld_tests {

using platform::StatusItemPlace;

namespace {

// Of no theme.
constexpr std::uint32_t iconColour = 0xFF00FF;
constexpr xcb_keycode_t downKey = 116;
constexpr xcb_keycode_t returnKey = 36;
// Less than drawn text has, and more than a plain ground with a border.
constexpr int coloursOfText = 12;

backends::IconRendering filled(int size)
{
    backends::IconRendering rendering { size, {} };
    for (int i = 0; i < size * size; ++i)
        rendering.pixels.insert(rendering.pixels.end(), { 0xFF, 0xFF, 0x00, 0xFF });
    return rendering;
}

} // namespace

// An item on the session bus in front of a panel of others and a user with a mouse.
class RealPanelTest : public StatusItemTest, public ::testing::WithParamInterface<RealPanel::Program> {
protected:
    void startDesktop()
    {
        realPanel = std::make_unique<RealPanel>(GetParam());
        desktop = std::make_unique<Desktop>("800x600x24");
        desktop->startWindowManager();
        // Panels keep their settings in services.
        bus = std::make_unique<SessionBus>(SessionBus::Services::Installed);
        user = std::make_unique<Client>(desktop->display());
        options.renderings = [](auto const&) {
            return std::vector<backends::IconRendering> { filled(16), filled(22), filled(24), filled(32), filled(48) };
        };
        makeBar(bus->address());
        item = makeItem();
        item->button()->setImage(
            std::make_shared<platform::NSImage>(platform::URL::fileURL("/icon.pdf", platform::URL::IsDirectory::No)));
        fillMenu();
        realPanel->start();
    }
    void keep(std::string const& what) { Screenshot(*user).keep(realPanel->name() + "-" + what); }
    // Until it stands where it stood at the last look: panels move what they show while they start.
    bool waitForIcon()
    {
        std::optional<Geometry> before;
        return pumpUntil([&] { return place() == StatusItemPlace::Panel; }) && pumpUntil([&] {
            icon = RealPanel::iconOf(*user, iconColour);
            return icon && std::exchange(before, icon) == icon;
        });
    }
    void click(int button) { RealPanel::click(*user, *icon, button); }
    bool waitForMenu()
    {
        return pumpUntil([&] {
            auto const popups = RealPanel::popups(*user);
            return !popups.empty() && Screenshot(*user, user->geometry(popups.back())).colours() >= coloursOfText;
        });
    }
    void type(xcb_keycode_t key)
    {
        user->press(key);
        user->release(key);
    }
    // But for the right press: when a panel asks for the menu is its own affair.
    Texts chosen() const
    {
        Texts some;
        std::copy_if(actions.begin(), actions.end(), std::back_inserter(some),
            [](auto const& action) { return action != "right"; });
        return some;
    }
    bool waitForActions(Texts const& expected)
    {
        return pumpUntil([&] { return chosen().size() >= expected.size(); }) && chosen() == expected;
    }

    std::unique_ptr<RealPanel> realPanel;
    std::unique_ptr<Desktop> desktop;
    std::unique_ptr<Client> user;
    std::optional<Geometry> icon;
};

TEST_P(RealPanelTest, ShowsTheItemAndItsMenuAndGetsItBack)
{
    startDesktop();
    ASSERT_TRUE(waitForIcon());
    keep("1-shown");
    click(XCB_BUTTON_INDEX_1);
    ASSERT_TRUE(waitForActions({ "left" }));

    click(XCB_BUTTON_INDEX_3);
    ASSERT_TRUE(waitForMenu());
    keep("2-menu");
    type(downKey);
    type(returnKey);
    ASSERT_TRUE(waitForActions({ "left", "open" }));
    EXPECT_LE(std::count(actions.begin(), actions.end(), "right"), 1);

    realPanel->end();
    ASSERT_TRUE(pumpUntil([&] { return !RealPanel::iconOf(*user, iconColour); }));
    ASSERT_TRUE(pumpUntil([&] { return place() != StatusItemPlace::Panel; }));
    realPanel->start();
    ASSERT_TRUE(waitForIcon());
    keep("3-back");
    click(XCB_BUTTON_INDEX_1);
    ASSERT_TRUE(waitForActions({ "left", "open", "left" }));
    startPanel();
    settle();
    EXPECT_EQ(chosen(), (Texts { "left", "open", "left" }));
    EXPECT_EQ(lines.messages, Texts {});
}

INSTANTIATE_TEST_SUITE_P(All, RealPanelTest, ::testing::Values(RealPanel::xfce(), RealPanel::lxqt()),
    [](auto const& program) { return program.param.name; });

} // namespace paneweld_tests
