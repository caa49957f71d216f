#include "iOS/StatusItemDragView.h"
#include "platform/runtime/NSNotification.h"
#include "tests/support/StatusItemWorld.h"

using namespace paneweld;
using platform::LayoutAttribute;
using platform::List;
using platform::NotificationCenter;

namespace {

class StatusItem : public StatusItemWorld {
protected:
    std::string initLine(std::string const& model, std::string const& hostName)
    {
        return "log info status item controller init: model=" + model + ", hostName=" + hostName + ", os=Memory 1.0";
    }
};

} // namespace

TEST_F(StatusItem, IsMadeThenTheMachineIsLoggedThenTheButtonIsSetUp)
{
    installBundle();
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened(),
        (Lines { "statusitem make length=-1", initLine("Memory1,1", "Memory Machine"),
            "statusitem image file:///opt/ideas/Frameworks/Paneweld.framework/Resources/icon.pdf template=yes" }));
}

TEST_F(StatusItem, HearsOfTheUserFromAnySender)
{
    start();
    auto const observed = NotificationCenter::defaultCenter().observations(*controller);
    ASSERT_EQ(observed.size(), 1u);
    EXPECT_EQ(observed[0].name, NotificationName::updateMenuItemTitle());
    EXPECT_EQ(observed[0].object, nullptr);
}

TEST_F(StatusItem, AMachineThatSaysNothingIsUnknownByNameAndEmptyByModel)
{
    world.setLocalizedHostName(std::nullopt);
    world.setMachineModel(std::nullopt);
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened(), (Lines { "statusitem make length=-1", initLine("", "Unknown") }));
}

TEST_F(StatusItem, TheModelIsReadUpToTheFirstZeroAndMadeText)
{
    world.setMachineModel(std::string("Book\xFF\0junk", 10));
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened()[1], initLine("Book\uFFFD", "Memory Machine"));
}

TEST_F(StatusItem, TheButtonIsCoveredByAViewThatTakesClicksAndDrops)
{
    start();
    Lines const types { "public.file-url", "public.url" };
    EXPECT_EQ(button()->registeredDraggedTypes(), types);
    ASSERT_EQ(button()->subviews().size(), 1u);
    auto const& view = *button()->subviews()[0];
    EXPECT_TRUE(dynamic_cast<StatusItemDragView const*>(&view));
    EXPECT_EQ(view.registeredDraggedTypes(), types);
    EXPECT_EQ(view.frame(), platform::Rect {});
    EXPECT_FALSE(view.translatesAutoresizingMaskIntoConstraints());
    std::vector<LayoutAttribute> pinned;
    for (auto const& constraint : view.constraints()) {
        EXPECT_EQ(constraint.second.view.lock(), button());
        EXPECT_EQ(constraint.first.attribute, constraint.second.attribute);
        pinned.push_back(constraint.first.attribute);
    }
    EXPECT_EQ(pinned,
        (std::vector {
            LayoutAttribute::Leading, LayoutAttribute::Trailing, LayoutAttribute::Top, LayoutAttribute::Bottom }));
}

TEST_F(StatusItem, WithoutItsBundleItHasNoImage)
{
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened(), (Lines { "statusitem make length=-1", initLine("Memory1,1", "Memory Machine") }));
    EXPECT_EQ(button()->image(), nullptr);
}

TEST_F(StatusItem, AnIconThatCannotBeReadIsNoImage)
{
    world.files().addFile(resources + "/icon.pdf", "%PDF");
    world.files().addDirectory("/opt/ideas");
    world.bundles().setMainBundle("/opt/ideas");
    controller = StatusItemController::create(world);
    EXPECT_EQ(button()->image(), nullptr);
    EXPECT_EQ(button()->subviews().size(), 1u);
}

TEST_F(StatusItem, WithoutAButtonTheRestStillWorks)
{
    installBundle();
    world.statusBar()->setHasButton(false);
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened(), (Lines { "statusitem make length=-1", initLine("Memory1,1", "Memory Machine") }));
    EXPECT_EQ(button(), nullptr);
    EXPECT_EQ(NotificationCenter::defaultCenter().observations(*controller).size(), 1u);
    tellUser(false);
    controller->openBrainstormWindow();
    EXPECT_EQ(happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
}

TEST_F(StatusItem, WithoutAStatusBarTheRestStillWorks)
{
    auto const& bar = *world.statusBar();
    world.setHasStatusBar(false);
    controller = StatusItemController::create(world);
    EXPECT_EQ(happened(), Lines { initLine("Memory1,1", "Memory Machine") });
    EXPECT_EQ(bar.item(), nullptr);
    EXPECT_EQ(NotificationCenter::defaultCenter().observations(*controller).size(), 1u);
    tellUser(false);
    controller->checkForUpdates();
    EXPECT_EQ(happened(), (Lines { "log debug check for updates", "Paneweld.CheckForUpdates" }));
}

TEST_F(StatusItem, ALeftClickAsksForAWindowAndLeavesTheAppWhereItIs)
{
    start();
    button()->leftClick();
    EXPECT_EQ(happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
    EXPECT_TRUE(button()->menuLines().empty());
}

TEST_F(StatusItem, WhatIsPostedHasNoObjectAndNoPayload)
{
    start();
    Hearer const windows { NotificationName::openNewWindow() };
    Hearer const forced { NotificationName::forceOpenNewBrainstormWindow() };
    Hearer const settings { NotificationName::openSettingsOrOnboarding() };
    Hearer const updates { NotificationName::checkForUpdates() };
    controller->openBrainstormWindow();
    controller->forceOpenNewBrainstormWindow();
    controller->openSettingsWindow();
    controller->checkForUpdates();
    for (auto const* const hearer : { &windows, &forced, &settings, &updates }) {
        ASSERT_EQ(hearer->heard.size(), 1u);
        EXPECT_EQ(hearer->heard[0].object, nullptr);
        EXPECT_FALSE(hearer->heard[0].userInfo);
    }
}

TEST_F(StatusItem, ALeftClickBringsTheFirstOfTwoBrainstormWindowsForward)
{
    start();
    auto const first = showTagged("brainstorm", "first");
    auto const second = showTagged("brainstorm", "second");
    second->becomeKey();
    forget();
    button()->leftClick();
    EXPECT_EQ(happened(),
        (Lines { "log debug focus brainstorm window", "application activate", "first makeKeyAndOrderFront",
            "first orderFrontRegardless" }));
    EXPECT_TRUE(first->isKeyWindow());
}

TEST_F(StatusItem, ABrainstormWindowThatCannotHaveTheKeyboardIsSkipped)
{
    start();
    showTagged("brainstorm", "first")->setCanBecomeKey(false);
    auto const second = showTagged("brainstorm", "second");
    button()->leftClick();
    EXPECT_EQ(happened().back(), "second orderFrontRegardless");
    second->setCanBecomeKey(false);
    button()->leftClick();
    EXPECT_EQ(happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
}

TEST_F(StatusItem, OnlyATagMakesABrainstormWindow)
{
    start();
    world.makeWindow("untagged", "brainstorm")->show();
    for (auto const* const kind : { "iOSApp", "settings", "onboarding", "inspector" })
        showTagged(kind, kind);
    auto const closed = showTagged("brainstorm", "closed");
    closed->close();
    forget();
    controller->openBrainstormWindow();
    EXPECT_EQ(happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
}

TEST_F(StatusItem, ANewBrainstormIsAskedForWhateverIsOpen)
{
    start();
    auto const window = showTagged("brainstorm", "b1");
    controller->forceOpenNewBrainstormWindow();
    EXPECT_EQ(happened(),
        (Lines { "log debug force open new brainstorm window", "application activate",
            "Paneweld.ForceOpenNewBrainstormWindow" }));
}

TEST_F(StatusItem, TheSettingsWindowIsPreferredToTheOnboardingWindow)
{
    start();
    showTagged("onboarding", "welcome");
    auto const settings = showTagged("settings", "settings");
    controller->openSettingsWindow();
    EXPECT_EQ(happened(),
        (Lines { "application activate", "settings makeKeyAndOrderFront", "settings orderFrontRegardless",
            "log debug move settings window to front" }));
    settings->setCanBecomeKey(false);
    controller->openSettingsWindow();
    EXPECT_EQ(happened(),
        (Lines { "application activate", "welcome makeKeyAndOrderFront", "welcome orderFrontRegardless",
            "log debug move onboarding window to front" }));
}

TEST_F(StatusItem, WithNeitherTheHostDecidesWhichOfThemToOpen)
{
    start();
    showTagged("onboarding", "welcome")->setCanBecomeKey(false);
    showTagged("brainstorm", "b1");
    controller->openSettingsWindow();
    EXPECT_EQ(happened(),
        (Lines { "application activate", "log debug open settings or onboarding window",
            "Paneweld.OpenSettingsOrOnboarding" }));
}

TEST_F(StatusItem, UpdatesAreTheHostsBusiness)
{
    start();
    controller->checkForUpdates();
    EXPECT_EQ(happened(), (Lines { "log debug check for updates", "Paneweld.CheckForUpdates" }));
}

TEST_F(StatusItem, QuittingPostsAndLogsNothing)
{
    start();
    controller->quit();
    EXPECT_EQ(happened(), Lines { "application terminate" });
}

TEST_F(StatusItem, ADropReachesTheHostInItsOrder)
{
    start();
    Hearer const host { NotificationName::importDroppedURLs() };
    EXPECT_TRUE(drop(urls({ "file:///home/ada/b.txt", "https://example.org/a" })));
    EXPECT_EQ(happened(),
        (Lines { "log debug receive drop: count=2",
            "Paneweld.ImportDroppedURLs urls=(file:///home/ada/b.txt, https://example.org/a)", "drop taken" }));
    ASSERT_EQ(host.heard.size(), 1u);
    EXPECT_EQ(host.heard[0].object, nullptr);
    EXPECT_EQ(host.heard[0].userInfo->size(), 1u);
}

TEST_F(StatusItem, AnEmptyDropIsPassedOnAndAnUnreadableOneIsNot)
{
    start();
    EXPECT_TRUE(drop(List {}));
    EXPECT_EQ(
        happened(), (Lines { "log debug receive drop: count=0", "Paneweld.ImportDroppedURLs urls=()", "drop taken" }));
    EXPECT_FALSE(drop(std::nullopt));
    EXPECT_EQ(happened(), (Lines { "log error empty drag operation", "drop refused" }));
    auto mixed = urls({ "file:///home/ada/a.txt" });
    mixed.push_back("a.txt");
    EXPECT_FALSE(drop(mixed));
    EXPECT_EQ(happened(), (Lines { "log error empty drag operation", "drop refused" }));
}

TEST_F(StatusItem, TheItemGoesWithTheController)
{
    start();
    button()->rightClick();
    auto const seen = button();
    forget();
    controller = nullptr;
    EXPECT_EQ(happened(), Lines { "statusitem remove" });
    EXPECT_EQ(world.statusBar()->item(), nullptr);
    // A button that somebody still sees comes to nothing.
    EXPECT_FALSE(seen->choose(0));
    seen->closeMenu();
    seen->leftClick();
    seen->rightClick();
    EXPECT_TRUE(seen->menuLines().empty());
    EXPECT_TRUE(happened().empty());
    backends::MemoryPasteboard pasteboard(urls({ "file:///home/ada/a.txt" }));
    EXPECT_TRUE(seen->drop(pasteboard));
    EXPECT_EQ(happened(), Lines { "drop taken" });
    post(NotificationName::updateMenuItemTitle(), UpdateMenuItemTitle { false }.userInfo());
}

TEST_F(StatusItem, TheHostMayLetGoOfItFromInsideAClick)
{
    start();
    platform::Observation const host(NotificationCenter::defaultCenter(),
        { NotificationName::openNewWindow(), nullptr, {} }, [this](auto const&) { controller = nullptr; });
    button()->leftClick();
    EXPECT_EQ(
        happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow", "statusitem remove" }));
}

TEST_F(StatusItem, TheHostMayLetGoOfItFromInsideAChoice)
{
    start();
    button()->rightClick();
    forget();
    platform::Observation const host(NotificationCenter::defaultCenter(),
        { NotificationName::checkForUpdates(), nullptr, {} }, [this](auto const&) { controller = nullptr; });
    EXPECT_TRUE(button()->choose(4));
    EXPECT_EQ(happened(), (Lines { "log debug check for updates", "Paneweld.CheckForUpdates", "statusitem remove" }));
}

TEST_F(StatusItem, AWindowThatTheHostClosesOnTheWayForwardDoesNoHarm)
{
    start();
    auto window = showTagged("brainstorm", "b1");
    platform::Observation const host(NotificationCenter::defaultCenter(),
        { platform::windowDidBecomeKeyNotification(), nullptr, {} }, [&](auto const&) {
            window->close();
            window = nullptr;
        });
    button()->leftClick();
    EXPECT_EQ(happened(),
        (Lines { "log debug focus brainstorm window", "application activate", "b1 makeKeyAndOrderFront", "b1 close",
            "b1 orderFrontRegardless" }));
    button()->leftClick();
    EXPECT_EQ(happened(), (Lines { "log debug open brainstorm window", "Paneweld.OpenNewWindow" }));
}

TEST_F(StatusItem, ADropMayComeFromInsideADrop)
{
    start();
    int depth = 0;
    platform::Observation const host(NotificationCenter::defaultCenter(),
        { NotificationName::importDroppedURLs(), nullptr, {} }, [&](platform::Notification const& notification) {
            auto const dropped = ImportDroppedURLs::from(notification);
            ASSERT_TRUE(dropped);
            if (++depth == 1) {
                EXPECT_TRUE(drop(urls({ "file:///home/ada/inner" })));
                controller->openBrainstormWindow();
                tellUser(false);
            }
            // What was dropped first is still what it was.
            EXPECT_EQ(dropped->urls.size(), 1u);
        });
    EXPECT_TRUE(drop(urls({ "file:///home/ada/outer" })));
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(happened(), Lines { "drop taken" });
}

TEST_F(StatusItem, ItsActionsCanBePerformedByName)
{
    start();
    EXPECT_EQ(StatusItemController::runtimeClass().name, "PaneweldStatusItemController");
    for (auto const* const selector :
        { "openBrainstormWindow", "forceOpenNewBrainstormWindow", "openSettingsWindow", "checkForUpdates", "quit" }) {
        EXPECT_TRUE(platform::perform(*controller, selector)) << selector;
        EXPECT_FALSE(happened().empty()) << selector;
    }
    button()->rightClick();
    auto const notification = std::make_shared<platform::NSNotification>(platform::Notification {
        NotificationName::updateMenuItemTitle(), nullptr, UpdateMenuItemTitle { false }.userInfo() });
    EXPECT_TRUE(
        platform::perform(*controller, "updateMenuItemTitle:", { std::shared_ptr<platform::NSObject>(notification) }));
    EXPECT_EQ(titles()[2], "status_item_menu_sign_in");
    EXPECT_FALSE(platform::perform(*controller, "menu"));
}
