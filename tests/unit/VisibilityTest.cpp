#include "iOS/NSWindow+Paneweld.h"
#include "iOS/UIScheduler.h"
#include "tests/support/World.h"

#include <set>
#include <thread>

using namespace paneweld;
using platform::Seconds;

namespace {

constexpr std::uint16_t escape = 53;

class CountingManager : public WindowManager {
public:
    static std::shared_ptr<CountingManager> create(platform::Platform& platform)
    {
        std::shared_ptr<CountingManager> manager(new CountingManager(platform));
        manager->observeWindowActions();
        return manager;
    }

    std::vector<std::set<std::string>> rebuilds {};

protected:
    void rebuildResizePipelines(WindowAction const& change) override
    {
        if (change.action == WindowAction::Case::WillShow)
            m_shown.insert(change.windowIdentifier);
        else
            m_shown.erase(change.windowIdentifier);
        rebuilds.push_back(m_shown);
        WindowManager::rebuildResizePipelines(change);
    }

private:
    using WindowManager::WindowManager;

    std::set<std::string> m_shown;
};

class Visibility : public World {
protected:
    using Sets = std::vector<std::set<std::string>>;

    void SetUp() override
    {
        counting = CountingManager::create(world);
        manager = counting;
        manager->observeNotifications();
    }

    std::shared_ptr<CountingManager> counting;
};

} // namespace

TEST_F(Visibility, ShowingAndFocusingOneWindowIsOneChangeAndClosingItOneMore)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    window->resignKey();
    window->becomeKey();
    EXPECT_EQ(counting->rebuilds, (Sets { { "b1" } }));
    window->close();
    EXPECT_EQ(counting->rebuilds, (Sets { { "b1" }, {} }));
    window->reportWillClose();
    EXPECT_EQ(counting->rebuilds.size(), 2u);
}

TEST_F(Visibility, TwoWindowsAreTwoRebuildsTheSecondWithBoth)
{
    auto const first = showBrainstorm("b1");
    auto const second = showBrainstorm("b2");
    EXPECT_EQ(counting->rebuilds, (Sets { { "b1" }, { "b1", "b2" } }));
}

TEST_F(Visibility, TheFirstCloseOfAWindowNeverShownRebuildsOnceWithNothing)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    loadWindowIdentifierFromTitle(*window);
    window->reportWillClose();
    EXPECT_EQ(counting->rebuilds, (Sets { {} }));
}

TEST_F(Visibility, AWindowWithoutATagIsNotTracked)
{
    auto const window = world.makeWindow("w", "About");
    window->show();
    window->close();
    EXPECT_TRUE(counting->rebuilds.empty());
}

TEST_F(Visibility, EveryKindIsTracked)
{
    auto const window = world.makeWindow("w", tag("settings", "s1"));
    window->show();
    EXPECT_EQ(counting->rebuilds, (Sets { { "s1" } }));
}

TEST_F(Visibility, EscapeClosesTheBrainstormWindowWhileItIsKeyAndIsConsumed)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    EXPECT_TRUE(world.pressKey(0));
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(world.pressKey(escape));
    EXPECT_FALSE(window->isVisible());
    // The close resigned key, and that took the monitor away.
    EXPECT_TRUE(world.pressKey(escape));
}

TEST_F(Visibility, EscapeIsAskedForByItsCodeAlone)
{
    EXPECT_TRUE(world.eventMonitors().keyCodesOfInterest().empty());
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    EXPECT_EQ(world.eventMonitors().keyCodesOfInterest(), std::set<std::uint16_t> { escape });
    window->resignKey();
    EXPECT_TRUE(world.eventMonitors().keyCodesOfInterest().empty());
}

TEST_F(Visibility, AfterResigningEscapeIsDeliveredNormally)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    window->resignKey();
    EXPECT_TRUE(world.pressKey(escape));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Visibility, OtherKindsGetNoMonitorAndTakeNoneAway)
{
    auto const panel = showBrainstorm("b1");
    panel->becomeKey();
    auto const settings = world.makeWindow("s", tag("settings", "s1"));
    settings->show();
    // Key without the panel having resigned, as a notification may say: the panel's monitor stays.
    platform::NotificationCenter::defaultCenter().post({ platform::windowDidBecomeKeyNotification(), settings, {} });
    EXPECT_FALSE(world.pressKey(escape));
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(settings->isVisible());
}

TEST_F(Visibility, BecomingKeyTwiceHoldsOneMonitor)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    platform::NotificationCenter::defaultCenter().post({ platform::windowDidBecomeKeyNotification(), window, {} });
    window->setRefusesClose(true);
    world.ledger().clear();
    EXPECT_FALSE(world.pressKey(escape));
    EXPECT_EQ(ledger(), (std::vector<std::string> { "b1 close", "key 53 consumed" }));
}

TEST_F(Visibility, ARefusedCloseKeepsWindowMonitorAndTracking)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    window->setRefusesClose(true);
    EXPECT_FALSE(world.pressKey(escape));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_EQ(counting->rebuilds.size(), 1u);
    window->setRefusesClose(false);
    EXPECT_FALSE(world.pressKey(escape));
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Visibility, WithoutKeyWatchingNothingBreaks)
{
    world.setCanWatchKeys(false);
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    EXPECT_TRUE(world.pressKey(escape));
    window->resignKey();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Visibility, AKeyWindowResignsBeforeItCloses)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    std::vector<std::string> order;
    platform::NotificationCenter::defaultCenter().setTap(
        [&](auto const& notification) { order.push_back(notification.name.rawValue()); });
    window->close();
    EXPECT_EQ(
        order, (std::vector<std::string> { "NSWindowDidResignKeyNotification", "NSWindowWillCloseNotification" }));
}

TEST_F(Visibility, TheMonitorLetsGoOfItsWindowWhenItIsRemoved)
{
    std::weak_ptr<backends::MemoryWindow> weak;
    {
        auto const window = showBrainstorm("b1");
        weak = window;
        window->becomeKey();
        window->close();
        world.application().removeWindow(*window);
    }
    world.advance(Seconds { 1 });
    EXPECT_TRUE(weak.expired());
}

TEST_F(Visibility, DestroyingTheManagerLeavesMonitorsToThePlatform)
{
    auto const window = showBrainstorm("b1");
    window->becomeKey();
    manager = nullptr;
    counting = nullptr;
    EXPECT_FALSE(world.pressKey(escape));
}

TEST_F(Visibility, ActionsAreEqualByCaseAndId)
{
    EXPECT_EQ(WindowAction::willShow("a"), WindowAction::willShow("a"));
    EXPECT_NE(WindowAction::willShow("a"), WindowAction::willClose("a"));
    EXPECT_NE(WindowAction::willShow("a"), WindowAction::willShow("b"));
    EXPECT_EQ(std::hash<WindowAction> {}(WindowAction::willShow("a")),
        std::hash<WindowAction> {}(WindowAction::willShow("a")));
}

TEST_F(Visibility, TheSchedulerRunsAtOnceOnTheMainQueueAndLaterFromElsewhere)
{
    auto const& scheduler = UIScheduler::shared(world.mainQueue());
    EXPECT_EQ(&scheduler, &UIScheduler::shared(world.mainQueue()));
    std::vector<int> order;
    scheduler.schedule([&] { order.push_back(1); });
    EXPECT_EQ(order, std::vector<int> { 1 });
    std::thread([&] {
        scheduler.schedule([&] { order.push_back(2); });
        scheduler.schedule([&] { order.push_back(3); });
    }).join();
    EXPECT_EQ(order, std::vector<int> { 1 });
    world.settle();
    EXPECT_EQ(order, (std::vector<int> { 1, 2, 3 }));
}
