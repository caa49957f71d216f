#include "tests/linux/ForkedTray.h"
#include "tests/linux/LinuxTest.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/StatusWatcherStandIn.h"
#include "tests/linux/TrayStandIn.h"

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/appkit/NSStatusItem.h"

#include <cstdlib>

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

// A status item on a desktop of X, with a view over its button that writes down what it is told: "left", "right".
class Tray : public LinuxTest {
protected:
    class View : public platform::NSView {
    public:
        explicit View(std::vector<std::string>& actions)
            : m_actions(actions)
        {
        }
        void mouseDown(platform::NSEvent const&) override { m_actions.push_back("left"); }
        void rightMouseDown(platform::NSEvent const&) override { m_actions.push_back("right"); }

    private:
        std::vector<std::string>& m_actions;
    };

    void startDesktop()
    {
        bus = std::make_unique<SessionBus>();
        watcher = std::make_unique<StatusWatcherStandIn>(bus->address());
        desktop = std::make_unique<Desktop>();
        toolkit = std::make_unique<Toolkit>(desktop->display());
        onlooker = std::make_unique<Onlooker>(desktop->display());
    }

    void startItem()
    {
        ASSERT_NO_FATAL_FAILURE(installBackend());
        backend->statusBar()->setPlaceHandler([this] { places.push_back(place()); });
        makeItem();
    }

    void makeItem()
    {
        item = backend->statusBar()->statusItemWithLength(platform::NSVariableStatusItemLength);
        auto const image = std::make_shared<platform::NSImage>(
            platform::URL::fileURL(PANEWELD_TEST_BUNDLE "/Resources/icon.pdf", platform::URL::IsDirectory::No));
        image->setTemplate(true);
        item->button()->setImage(image);
        item->button()->addSubview(std::make_shared<View>(actions), platform::ViewPosition::Above, nullptr);
    }

    TrayStandIn& addTray(TrayStandIn::Manners manners = {})
    {
        trays.push_back(std::make_unique<TrayStandIn>(desktop->display(), std::move(manners)));
        return *trays.back();
    }

    StatusItemPlace place() const { return backend->statusBar()->place(); }

    bool pump(std::function<bool()> condition)
    {
        return pumpUntil([&] {
            for (auto const& tray : trays)
                tray->handleEvents();
            return condition();
        });
    }
    bool comesTo(StatusItemPlace wanted)
    {
        return pump([&] { return place() == wanted; });
    }
    // Until what the item has drawn, if it has, is on the screen.
    bool pumpUntilPixel(int x, int y, std::uint32_t colour)
    {
        return pump([&] { return toolkit->pixel(x, y) == colour; });
    }

    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<StatusWatcherStandIn> watcher;
    std::vector<std::unique_ptr<TrayStandIn>> trays;
    std::shared_ptr<platform::NSStatusItem> item;
    std::vector<std::string> actions;
    std::vector<StatusItemPlace> places;
};

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
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    for (int i = 0; i < 20; ++i) {
        trays.clear();
        ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
        auto& tray = addTray();
        ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
        EXPECT_EQ(tray.asked().size(), 1u);
    }
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
    auto& tray = addTray();
    startItem();
    ASSERT_TRUE(pump([&] { return tray.icons().size() == 1 && tray.isViewable(tray.icons()[0]); }));
    auto const icon = tray.iconPlace();
    toolkit->movePointer(icon.x + 5, icon.y + 5);
    for (int const button : { 1, 2, 3, 4, 1 }) {
        toolkit->button(button, true);
        toolkit->button(button, false);
    }
    ASSERT_TRUE(pump([&] { return actions.size() == 3; }));
    settle();
    EXPECT_EQ(actions, (std::vector<std::string> { "left", "right", "left" }));
}

TEST_F(Tray, SaysWhichColourTheIconHas)
{
    startDesktop();
    auto& tray = addTray({ .foreground = { 0xFFFF, 0x8080, 0x0000 } });
    startItem();
    ASSERT_TRUE(pump([&] { return tray.icons().size() == 1; }));
    auto const icon = tray.iconPlace();
    auto const hasColour = [&](std::uint32_t colour) { return drawnRows(*toolkit, tray.iconPlace(), colour) > 0; };
    ASSERT_TRUE(pump([&] { return hasColour(0xFF8000); }));
    // Where nothing is drawn the bar is seen.
    EXPECT_TRUE(pumpUntilPixel(icon.x, icon.y, 0x204080));
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
