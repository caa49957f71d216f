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

} // namespace paneweld_tests
