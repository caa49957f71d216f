#include "platform/appkit/NSImage.h"
#include "tests/linux/PanelStandIn.h"
#include "tests/linux/TrayTest.h"

namespace paneweld_tests {

using platform::StatusItemPlace;

TEST_F(Tray, IsLeftAloneWhereTheServerDrawsNoIcons)
{
    startDesktop({ "-extension", "RENDER" });
    auto& tray = addTray();
    startItem();
    hearEverything();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    settle();
    tray.handleEvents();
    EXPECT_TRUE(tray.asked().empty());
    EXPECT_EQ(places, std::vector { StatusItemPlace::Panel });
    // Everything else goes on.
    EXPECT_NE(show(), nullptr);
}

TEST_F(Tray, ThatQuitsInOrderIsWaitedForAsOneThatDies)
{
    startDesktop();
    auto& tray = addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    tray.quit();
    ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
    // Long enough to be on the list of the bus, and a part of what a tray has for its return.
    pumpFor(std::chrono::milliseconds(100));
    addTray();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(watcher->count("Register"), 0);
    EXPECT_EQ(places, (std::vector { StatusItemPlace::Tray, StatusItemPlace::Nowhere, StatusItemPlace::Tray }));
}

TEST_F(Tray, ThatQuitsInOrderForGoodLeavesTheItemToThePanel)
{
    startDesktop();
    auto& tray = addTray();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    tray.quit();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    EXPECT_EQ(watcher->items().size(), 1u);
}

TEST_F(Tray, OrAPanelShowsAProgramWhereTheImageCannotBeDrawn)
{
    startDesktop();
    startItem();
    ASSERT_TRUE(comesTo(StatusItemPlace::Panel));
    PanelStandIn panel(bus->address(), watcher->items().at(0));
    auto const iconName = [&] {
        auto answer = panel.ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
            [](auto* call) { sd_bus_message_append(call, "ss", "org.kde.StatusNotifierItem", "IconName"); });
        pump([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return answer.get();
    };
    EXPECT_EQ(iconName(), "<s 'icon-symbolic'>");
    item->button()->setImage(std::make_shared<platform::NSImage>(
        platform::URL::fileURL("/nowhere/icon.pdf", platform::URL::IsDirectory::No)));
    EXPECT_EQ(iconName(), "<s 'application-x-executable'>");
}

} // namespace paneweld_tests
