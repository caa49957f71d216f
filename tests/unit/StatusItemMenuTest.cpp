#include "platform/appkit/NSMenu.h"
#include "tests/support/StatusItemWorld.h"

#include <algorithm>

using namespace paneweld;
using platform::NotificationCenter;
using MenuLine = backends::MemoryStatusBarButton::MenuLine;

namespace {

class StatusItemMenu : public StatusItemWorld {
protected:
    // What one line of the menu does, from a fresh look at the menu.
    Lines choosing(std::size_t line)
    {
        button()->rightClick();
        forget();
        EXPECT_TRUE(button()->choose(line));
        EXPECT_TRUE(button()->menuLines().empty()) << "a choice closes the menu";
        return happened();
    }

    std::string const shownLine = "menu shown at {0, 22}";
};

} // namespace

TEST_F(StatusItemMenu, ARightClickOpensTheMenuAtTheTopOfTheButton)
{
    installBundle();
    start();
    button()->rightClick();
    EXPECT_EQ(happened(), Lines { shownLine });
    EXPECT_EQ(button()->menuLines(),
        (std::vector<MenuLine> { { "Open" }, { "New Brainstorm" }, { "Settings…", "," }, { "", "", false, true },
            { "Check for Updates…" }, { "", "", false, true }, { "Quit", "q" } }));
    // A taller bar has its menu elsewhere.
    button()->setFrame({ 7, 3, 30, 37 });
    button()->rightClick();
    EXPECT_EQ(happened(), Lines { "menu shown at {0, 37}" });
}

TEST_F(StatusItemMenu, KeyEquivalentsAreHeldWithCommand)
{
    start();
    button()->rightClick();
    ASSERT_TRUE(button()->openMenu());
    for (auto const& item : button()->openMenu()->itemArray()) {
        EXPECT_EQ(item->keyEquivalentModifierMask(), platform::NSEventModifierFlags::command) << item->title();
        EXPECT_EQ(item->submenu(), nullptr) << item->title();
    }
}

TEST_F(StatusItemMenu, EachLineDoesWhatItSays)
{
    start();
    EXPECT_EQ(choosing(0), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
    EXPECT_EQ(choosing(1),
        (Lines { "log debug force open new brainstorm window", "application activate",
            "Paneweld.ForceOpenNewBrainstormWindow" }));
    EXPECT_EQ(choosing(2),
        (Lines { "application activate", "log debug open settings or onboarding window",
            "Paneweld.OpenSettingsOrOnboarding" }));
    EXPECT_EQ(choosing(4), (Lines { "log debug check for updates", "Paneweld.CheckForUpdates" }));
    EXPECT_EQ(choosing(6), Lines { "application terminate" });
    button()->rightClick();
    forget();
    for (auto const separator : { 3u, 5u, 7u })
        EXPECT_FALSE(button()->choose(separator));
    EXPECT_TRUE(happened().empty());
}

TEST_F(StatusItemMenu, TheMenuSpeaksTheUsersLanguage)
{
    installBundle();
    world.files().setUserLanguages({ "de" });
    start();
    button()->rightClick();
    EXPECT_EQ(titles(),
        (Lines { "Öffnen", "Neues Brainstorming", "Einstellungen …", "-", "Nach Updates suchen …", "-", "Beenden" }));
    tellUser(false);
    EXPECT_EQ(titles()[2], "Anmelden …");
}

TEST_F(StatusItemMenu, WithoutItsBundleTheTitlesAreTheirKeys)
{
    start();
    button()->rightClick();
    EXPECT_EQ(titles(),
        (Lines { "status_item_menu_open", "status_item_menu_new_brainstorm", "settings", "-",
            "status_item_menu_check_updates", "-", "status_item_menu_quit" }));
    tellUser(false);
    EXPECT_EQ(titles()[2], "status_item_menu_sign_in");
    tellUser(true);
    EXPECT_EQ(titles()[2], "settings");
}

TEST_F(StatusItemMenu, TheMenuIsBuiltAtTheFirstRightClickAndKept)
{
    start();
    // The texts are looked up when the menu is built, not when the item is made.
    installBundle();
    button()->rightClick();
    EXPECT_EQ(titles().front(), "Open");
    auto const built = button()->openMenu();
    button()->closeMenu();
    button()->rightClick();
    EXPECT_EQ(button()->openMenu(), built);
}

TEST_F(StatusItemMenu, WhoIsSignedInIsForgottenBeforeTheFirstRightClick)
{
    installBundle();
    start();
    tellUser(false);
    button()->rightClick();
    EXPECT_EQ(titles()[2], "Settings…");
}

TEST_F(StatusItemMenu, TheThirdLineFollowsTheUser)
{
    installBundle();
    start();
    button()->rightClick();
    forget();
    for (auto const hasUser : { false, false, true })
        NotificationCenter::defaultCenter().post(
            { NotificationName::updateMenuItemTitle(), controller, UpdateMenuItemTitle { hasUser }.userInfo() });
    auto const lines = happened();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "menu item title: Sign In…"), 1);
    EXPECT_EQ(lines.back(), "menu item title: Settings…");
    tellUser(false);
    EXPECT_EQ(titles(), (Lines { "Open", "New Brainstorm", "Sign In…", "-", "Check for Updates…", "-", "Quit" }));
    // It is the same line, whatever it says.
    EXPECT_EQ(choosing(2).back(), "Paneweld.OpenSettingsOrOnboarding");
    button()->rightClick();
    EXPECT_EQ(titles()[2], "Sign In…");
}

TEST_F(StatusItemMenu, WhatIsNoAnswerAboutTheUserIsIgnored)
{
    start();
    button()->rightClick();
    auto const& name = NotificationName::updateMenuItemTitle();
    NotificationCenter::defaultCenter().post({ name, nullptr, {} });
    for (auto const& userInfo : { platform::Dictionary {}, { { "user", false } }, { { "hasUser", "true" } },
             { { "hasUser", "false" } }, { { "hasUser", platform::Value() } }, { { "hasUser", 2 } } })
        post(name, userInfo);
    EXPECT_EQ(titles()[2], "settings");
    tellUser(false);
    post(name, { { "hasUser", "true" } });
    EXPECT_EQ(titles()[2], "status_item_menu_sign_in");
}
