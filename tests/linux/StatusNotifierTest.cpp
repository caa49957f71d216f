#include "tests/linux/SilentSocket.h"
#include "tests/linux/StatusItemFixture.h"

#include "platform/appkit/NSImage.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace paneweld_tests {

using platform::StatusItemPlace;
using Places = std::vector<StatusItemPlace>;

class StatusNotifierTest : public StatusItemTest {
protected:
    std::string all()
    {
        return answer(panel->ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
            [](auto* call) { sd_bus_message_append(call, "s", "org.kde.StatusNotifierItem"); }));
    }
    std::string get(char const* property)
    {
        return answer(panel->ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
            [=](auto* call) { sd_bus_message_append(call, "ss", "org.kde.StatusNotifierItem", property); }));
    }
};

TEST_F(StatusNotifierTest, IsRegisteredOnceAndShown)
{
    startShown();
    expectOnTheListOnce(*watcher);
    EXPECT_EQ(places, Places { StatusItemPlace::Panel });
    EXPECT_EQ(all(),
        "{'AttentionIconName': <s ''>, 'AttentionIconPixmap': <a(iiay) []>, 'AttentionMovieName': <s ''>, "
        "'Category': <s 'ApplicationStatus'>, 'IconName': <s 'image-missing'>, 'IconPixmap': <a(iiay) []>, "
        "'IconThemePath': <s ''>, 'Id': <s 'app.test'>, 'ItemIsMenu': <b false>, 'Menu': <o '/MenuBar'>, "
        "'OverlayIconName': <s ''>, 'OverlayIconPixmap': <a(iiay) []>, 'Status': <s 'Active'>, 'Title': <s 'Test'>, "
        "'ToolTip': <(sa(iiay)ss) ('', [], 'Test', '')>, 'WindowId': <i 0>}");
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(StatusNotifierTest, ANameThatIsTakenIsNotNeeded)
{
    class Squatter : public BusPeer {
    public:
        explicit Squatter(std::string address)
            : BusPeer(std::move(address), itemName())
        {
            start();
        }
        ~Squatter() override { stop(); }

    private:
        int handleCall(sd_bus_message*) override { return 0; }
    };
    bus = std::make_unique<SessionBus>();
    Squatter const squatter(bus->address());
    startWatcher();
    makeBar(bus->address());
    item = makeItem();
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items(), Texts { "/StatusNotifierItem" });
    auto const call = watcher->calls().front();
    panel = std::make_unique<PanelStandIn>(bus->address(), call.substr(call.rfind(' ') + 1));
    EXPECT_EQ(get("Id"), "<s 'app.test'>");
}

TEST_F(StatusNotifierTest, NoBusASilentBusAndALostBusAreNowhere)
{
    makeBar("");
    item = makeItem();
    loop->dispatch();
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
    ASSERT_EQ(lines.messages.size(), 1u);
    EXPECT_TRUE(lines.messages[0].starts_with("no status item on the session bus: ")) << lines.messages[0];

    platform::TemporaryFolder const folder;
    SilentSocket silent(folder.path() + "/bus");
    makeBar("unix:path=" + folder.path() + "/bus");
    item = makeItem();
    item->button()->setImage(
        std::make_shared<platform::NSImage>(platform::URL::fileURL("/icon.pdf", platform::URL::IsDirectory::No)));
    menu->popUpMenuPositioningItem(nullptr, {}, *item->button());
    auto const open = add("Open", "open");
    for (int i = 0; i < 10'000; ++i) {
        open->setTitle(std::to_string(i));
        loop->dispatch();
    }
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);
    silent.hangUp();
    for (int i = 0; i < 10; ++i)
        loop->dispatch();
    EXPECT_EQ(place(), StatusItemPlace::Nowhere);

    item.reset();
    menu = std::make_shared<platform::NSMenu>();
    startShown();
    places.clear();
    bus->end();
    EXPECT_TRUE(waitFor(StatusItemPlace::Nowhere));
    EXPECT_EQ(places, Places { StatusItemPlace::Nowhere });
    item->button()->setImage(nullptr);
    fillMenu();
    menu->popUpMenuPositioningItem(nullptr, {}, *item->button());
    menu->itemArray()[0]->setTitle("Alone");
    loop->dispatch();
}

TEST_F(StatusNotifierTest, TheBusIsGreetedAtOnceAndOnlyAnItemKeepsIt)
{
    auto const sockets = [] {
        auto const all = std::filesystem::directory_iterator("/proc/self/fd");
        return std::count_if(begin(all), end(all), [](auto const& file) {
            std::error_code gone;
            return std::filesystem::read_symlink(file, gone).string().starts_with("socket:");
        });
    };
    bus = std::make_unique<SessionBus>();
    startWatcher();
    auto const before = sockets();
    makeBar(bus->address());
    EXPECT_EQ(sockets(), before + 1);
    item = makeItem();
    EXPECT_EQ(sockets(), before + 1) << "the item has a connection of its own";
    EXPECT_TRUE(waitFor(StatusItemPlace::Panel));
    EXPECT_EQ(sockets(), before + 1);

    // An app that makes no item before its loop begins.
    item.reset();
    bar.reset();
    makeBar(bus->address());
    EXPECT_TRUE(pumpUntil([&] { return sockets() == before; }));
    item = makeItem();
    EXPECT_TRUE(waitFor(StatusItemPlace::Panel));
}

TEST_F(StatusNotifierTest, TwoItemsHaveTwoNames)
{
    startShown();
    auto const second = makeItem("left of the second");
    ASSERT_TRUE(pumpUntil([&] { return watcher->items().size() == 2; }));
    EXPECT_EQ(watcher->items(), (Texts { itemName(1), itemName(2) }));
    answer(panel->askItem("Activate", "ii", 0, 25));
    startPanel(2);
    answer(panel->askItem("Activate", "ii", 0, 25));
    settle();
    EXPECT_EQ(actions, (Texts { "left", "left of the second" }));
    item.reset();
    loop->dispatch();
    EXPECT_EQ(place(), StatusItemPlace::Panel);
}

TEST_F(StatusNotifierTest, AnItemThatGoesIsNowhere)
{
    startShown();
    item.reset();
    ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
    EXPECT_EQ(places, (Places { StatusItemPlace::Panel, StatusItemPlace::Nowhere }));
    // The news that it is shown can be what ends it, and so can its own press.
    bar->setPlaceHandler([&] { item.reset(); });
    item = makeItem();
    ASSERT_TRUE(pumpUntil([&] { return item == nullptr; }));
    ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
    bar->setPlaceHandler({});
    item = makeItem();
    auto const button = item->button();
    startPanel(3);
    ASSERT_TRUE(waitFor(StatusItemPlace::Panel));
    onAction = [&](auto const&) { item.reset(); };
    EXPECT_EQ(answer(panel->askItem("Activate", "ii", 0, 0)), "");
    ASSERT_TRUE(waitFor(StatusItemPlace::Nowhere));
    button->setImage(nullptr);
    menu->popUpMenuPositioningItem(nullptr, {}, *button);
    bar.reset();
}

TEST_F(StatusNotifierTest, EachButtonDoesOneThing)
{
    fillMenu();
    startShown();
    EXPECT_EQ(answer(panel->askItem("SecondaryActivate", "ii", 5, 6)), "");
    EXPECT_EQ(answer(panel->askItem("Scroll", "is", -120, "horizontal")), "");
    settle();
    EXPECT_EQ(actions, Texts {});
    EXPECT_EQ(answer(panel->askItem("Activate", "ii", 5, 6)), "");
    settle();
    EXPECT_EQ(actions, Texts { "left" });
    EXPECT_EQ(answer(panel->askItem("ContextMenu", "ii", 5, 6)), "");
    settle();
    EXPECT_EQ(actions, (Texts { "left", "right" }));
}

TEST_F(StatusNotifierTest, AnActivationTokenIsForTheNextPress)
{
    std::vector<std::string> tokens;
    options.userDidAct
        = [&](std::string const& token) { tokens.push_back(token + " before " + std::to_string(actions.size())); };
    startShown();
    EXPECT_EQ(answer(panel->askItem("ProvideXdgActivationToken", "s", "first")), "");
    EXPECT_EQ(answer(panel->askItem("ProvideXdgActivationToken", "s", "second")), "");
    answer(panel->askItem("Activate", "ii", 0, 0));
    answer(panel->askItem("Activate", "ii", 0, 0));
    settle();
    EXPECT_EQ(actions, (Texts { "left", "left" }));
    EXPECT_EQ(tokens, (Texts { "second before 0", " before 1" }));
}

TEST_F(StatusNotifierTest, WhatMakesNoSenseIsRefused)
{
    startShown();
    EXPECT_EQ(answer(panel->askItem("Activate", "s", "here")), "error: org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(lines.messages, Texts { "item: Activate refused: arguments of other types than \"ii\"" });
    EXPECT_EQ(answer(panel->askItem("XAyatanaSecondaryActivate", "u", 0u)),
        "error: org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(get("XAyatanaLabel"), "error: org.freedesktop.DBus.Error.UnknownProperty");
    auto const properties = "org.freedesktop.DBus.Properties";
    EXPECT_EQ(answer(panel->ask("/StatusNotifierItem", properties, "Set",
                  [](auto* call) {
                      sd_bus_message_append(call, "ssv", "org.kde.StatusNotifierItem", "Title", "s", "Other");
                  })),
        "error: org.freedesktop.DBus.Error.PropertyReadOnly");
    EXPECT_EQ(answer(panel->ask("/StatusNotifierItem", properties, "GetAll",
                  [](auto* call) { sd_bus_message_append(call, "s", "org.test.Other"); })),
        "error: org.freedesktop.DBus.Error.UnknownInterface");
    EXPECT_EQ(answer(panel->ask(
                  "/Elsewhere", properties, "GetAll", [](auto* call) { sd_bus_message_append(call, "s", ""); })),
        "error: org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_EQ(answer(panel->ask("/StatusNotifierItem", properties, "Get", [](auto*) {})),
        "error: org.freedesktop.DBus.Error.InvalidArgs");
    settle();
    EXPECT_EQ(actions, Texts {});
}

TEST_F(StatusNotifierTest, TellsWhatItIs)
{
    startShown();
    auto const text
        = answer(panel->ask("/StatusNotifierItem", "org.freedesktop.DBus.Introspectable", "Introspect", [](auto*) {}));
    for (auto const* part : { "<interface name=\"org.kde.StatusNotifierItem\">",
             "<method name=\"Activate\">\n   <arg type=\"i\" direction=\"in\"/>\n   <arg type=\"i\" "
             "direction=\"in\"/>\n",
             "<property name=\"IconPixmap\" type=\"a(iiay)\" access=\"read\"/>", "<signal name=\"NewIcon\">" })
        EXPECT_NE(text.find(part), std::string::npos) << part;
    auto const menuText
        = answer(panel->ask("/MenuBar", "org.freedesktop.DBus.Introspectable", "Introspect", [](auto*) {}));
    EXPECT_NE(menuText.find("<arg type=\"(ia{sv}av)\" direction=\"out\"/>"), std::string::npos) << menuText;
}

TEST_F(StatusNotifierTest, TheIconIsDrawnInAllSizesAndItsChangesAreTold)
{
    platform::TemporaryFolder const folder;
    auto const file = folder.write("icon.pdf", "drawn elsewhere");
    std::vector<backends::IconRendering> drawn { { 1, { 255, 1, 2, 3 } }, { 2, std::vector<std::uint8_t>(16, 9) },
        { 3, { 1 } } };
    int draws = 0;
    options.renderings = [&](platform::NSImage const&) {
        ++draws;
        return drawn;
    };
    auto const image
        = std::make_shared<platform::NSImage>(platform::URL::fileURL(file, platform::URL::IsDirectory::No));
    startShown();
    item->button()->setImage(image);
    item->button()->setImage(nullptr);
    settle();
    // Nobody has looked: nothing to draw, and nothing to tell.
    EXPECT_EQ(draws, 0);
    EXPECT_EQ(panel->calls(), Texts {});
    EXPECT_EQ(get("IconName"), "<s 'image-missing'>");
    item->button()->setImage(image);
    settle();
    EXPECT_EQ(panel->calls(), Texts { "NewIcon " });
    // One that is not as large as it says is left out.
    EXPECT_EQ(get("IconPixmap"),
        "<a(iiay) [(1, 1, [255, 1, 2, 3]), (2, 2, [9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9])]>");
    EXPECT_EQ(get("IconName"), "<s ''>");
    item->button()->setImage(image);
    settle();
    EXPECT_EQ(panel->calls().size(), 1u);

    drawn.pop_back();
    folder.write("icon-symbolic.svg", "<svg/>");
    bar->redraw();
    settle();
    EXPECT_EQ(panel->calls().size(), 1u);
    image->setTemplate(true);
    bar->redraw();
    settle();
    EXPECT_EQ(panel->calls(), (Texts { "NewIcon ", "NewIconThemePath '" + folder.path() + "'", "NewIcon " }));
    EXPECT_EQ(get("IconName"), "<s 'icon-symbolic'>");
    EXPECT_EQ(get("IconThemePath"), "<s '" + folder.path() + "'>");

    drawn.clear();
    item->button()->setImage(nullptr);
    EXPECT_EQ(get("IconName"), "<s 'image-missing'>");
    EXPECT_EQ(get("IconPixmap"), "<a(iiay) []>");
}

TEST_F(StatusNotifierTest, NothingWakesUpWhileNothingHappens)
{
    fillMenu();
    startShown();
    answer(panel->askMenu("GetLayout", "iias", 0, -1, 0));
    settle();
    loop->dispatch();
    EXPECT_FALSE(isReadable(1000));
}

} // namespace paneweld_tests
