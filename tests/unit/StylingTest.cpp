#include "iOS/NSWindow+Paneweld.h"
#include "tests/support/World.h"

#include "platform/appkit/NSVisualEffectView.h"

#include <thread>

using namespace paneweld;
using platform::Rect;

namespace {

class Styling : public World {
protected:
    void SetUp() override { startWindowManager(); }

    std::vector<platform::NSVisualEffectView const*> effectViews(backends::MemoryWindow const& window) const
    {
        std::vector<platform::NSVisualEffectView const*> views;
        for (auto const& view : window.contentView()->subviews()) {
            if (auto const* const effect = dynamic_cast<platform::NSVisualEffectView const*>(view.get()))
                views.push_back(effect);
        }
        return views;
    }
};

} // namespace

TEST_F(Styling, ABrainstormWindowGetsItsLookStepByStep)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1", "Ideas"), { 5, 5, 300, 200 });
    window->show();
    EXPECT_EQ(ledger(),
        (std::vector<std::string> { "w setTitle: Ideas", "w setAlphaValue: 0", "w setTitlebarAppearsTransparent: yes",
            "w setTitleVisibility: 1", "w setStyleMask: 32783", "w setBackgroundColor: clear",
            "w setMovableByWindowBackground: yes", "w setReleasedWhenClosed: no", "w setOpaque: no",
            "w setCollectionBehavior: 257", "w setHasShadow: yes", "w miniaturize button hidden=yes",
            "w zoom button hidden=yes", "w contentView subviews=1", "w setFrame: {320, 84, 640, 91} display: no" }));
    EXPECT_FALSE(window->standardWindowButton(platform::WindowButton::Close)->isHidden());
    EXPECT_EQ(log(), std::vector<std::string> { "debug: styled brainstorm window: id=b1" });
}

TEST_F(Styling, TheEffectViewLiesBelowEverythingAndIsPinnedToAllEdges)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    auto const content = window->contentView();
    content->addSubview(std::make_shared<platform::NSView>(), platform::ViewPosition::Above, nullptr);
    window->show();
    ASSERT_EQ(content->subviews().size(), 2u);
    auto const effects = effectViews(*window);
    ASSERT_EQ(effects.size(), 1u);
    EXPECT_EQ(content->subviews()[0].get(), effects[0]);
    EXPECT_EQ(effects[0]->material(), platform::VisualEffectMaterial::UnderWindowBackground);
    EXPECT_EQ(effects[0]->state(), platform::VisualEffectState::Active);
    EXPECT_FALSE(effects[0]->translatesAutoresizingMaskIntoConstraints());
    EXPECT_TRUE(effects[0]->wantsLayer());
    ASSERT_EQ(effects[0]->constraints().size(), 4u);
    for (auto const& constraint : effects[0]->constraints()) {
        EXPECT_EQ(constraint.first.attribute, constraint.second.attribute);
        EXPECT_EQ(constraint.second.view.lock(), content);
    }
    ASSERT_TRUE(content->layer());
    EXPECT_TRUE(content->layer()->masksToBounds());
}

TEST_F(Styling, TheBrainstormLineComesAtEveryShowAndFocusButTheWindowChangesOnce)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->show();
    auto const changes = ledger().size();
    window->show();
    window->becomeKey();
    EXPECT_EQ(ledger().size(), changes);
    EXPECT_EQ(log(), std::vector<std::string>(3, "debug: styled brainstorm window: id=b1"));
}

TEST_F(Styling, APinnedWindowFloatsFromTheStart)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    setBrainstormPinned(*window, true);
    window->show();
    EXPECT_EQ(window->level(), platform::windowLevelFloating);
}

TEST_F(Styling, MissingButtonsAreSkipped)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->removeStandardButtons();
    window->show();
    EXPECT_EQ(window->frame(), (Rect { 320, 84, 640, 91 }));
}

TEST_F(Styling, WithoutAContentViewABrainstormWindowStaysUnmarkedAndIsTriedAgain)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"), { 5, 5, 300, 200 });
    auto const content = window->contentView();
    window->setContentView(nullptr);
    window->show();
    EXPECT_TRUE(log().empty());
    EXPECT_EQ(window->frame(), (Rect { 5, 5, 300, 200 }));
    window->setContentView(content);
    window->becomeKey();
    EXPECT_EQ(window->frame(), (Rect { 320, 84, 640, 91 }));
    EXPECT_EQ(log().size(), 1u);
}

TEST_F(Styling, WithoutAScreenABrainstormWindowStaysUnseenAndGetsASecondEffectViewNextTime)
{
    auto const screen = world.mainScreen();
    world.setMainScreen({});
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->show();
    world.advance(platform::Seconds { 1 });
    EXPECT_EQ(window->alphaValue(), 0);
    EXPECT_TRUE(log().empty());
    world.setMainScreen(screen);
    window->show();
    world.advance(platform::Seconds { 1 });
    EXPECT_EQ(window->alphaValue(), 1);
    EXPECT_EQ(effectViews(*window).size(), 2u);
    EXPECT_EQ(log().size(), 1u);
}

TEST_F(Styling, ASmallAppWindowIsEnlargedAndCentred)
{
    auto const window = world.makeWindow("w", tag("iOSApp", "a1"), { 0, 0, 800, 600 });
    window->show();
    EXPECT_EQ(window->frame(), (Rect { 190, 37.5, 900, 700 }));
    EXPECT_EQ(log(), std::vector<std::string> { "debug: styled ios app window: id=a1" });
}

TEST_F(Styling, ALargeAppWindowKeepsItsSizeAndIsCentredOnce)
{
    auto const window = world.makeWindow("w", tag("iOSApp", "a1"), { 0, 0, 1000, 760 });
    window->show();
    EXPECT_EQ(window->frame(), (Rect { 140, 7.5, 1000, 760 }));
    window->setFrame({ 1, 2, 950, 710 }, platform::Display::Yes);
    window->show();
    EXPECT_EQ(window->frame(), (Rect { 1, 2, 950, 710 }));
    EXPECT_EQ(log().size(), 1u);
}

TEST_F(Styling, AnAppWindowWithoutAScreenIsTriedAgain)
{
    auto const screen = world.mainScreen();
    world.setMainScreen({});
    auto const window = world.makeWindow("w", tag("iOSApp", "a1"), { 0, 0, 800, 600 });
    window->show();
    EXPECT_TRUE(log().empty());
    world.setMainScreen(screen);
    window->show();
    EXPECT_EQ(log().size(), 1u);
}

TEST_F(Styling, AnOnboardingWindowIsLeftAsTheHostMadeIt)
{
    auto const window = world.makeWindow("w", tag("onboarding", "o1", "Welcome"));
    window->show();
    window->show();
    EXPECT_EQ(ledger(), std::vector<std::string> { "w setTitle: Welcome" });
    EXPECT_EQ(log(), std::vector<std::string> { "debug: styled onboarding app window: id=o1" });
}

TEST_F(Styling, ASettingsWindowKeepsItsTitleVisible)
{
    auto const window = world.makeWindow("w", tag("settings", "s1", "Settings"));
    window->show();
    window->becomeKey();
    EXPECT_EQ(ledger(), (std::vector<std::string> { "w setTitle: Settings", "w setTitleVisibility: 0" }));
    EXPECT_EQ(log(), std::vector<std::string> { "debug: styled settings app window: id=s1" });
}

TEST_F(Styling, AWindowOfNoKindIsLoggedAtEveryShowAndFocus)
{
    auto const window = world.makeWindow("w", "About");
    window->show();
    window->becomeKey();
    EXPECT_EQ(log(), std::vector<std::string>(2, "info: did not style window: id= class=NSWindow"));
    auto const odd = world.makeWindow("o", tag("inspector", "i1"));
    odd->show();
    EXPECT_EQ(log().back(), "info: did not style window: id=i1 class=NSWindow");
}

TEST_F(Styling, ANotificationAboutSomethingElseThanAWindowIsIgnored)
{
    auto const object = std::make_shared<platform::NSObject>();
    for (auto const& name :
        { platform::windowWillBecomeVisibleNotification(), platform::windowDidBecomeKeyNotification(),
            platform::windowDidResignKeyNotification(), platform::windowWillCloseNotification(),
            platform::windowWillStartLiveResizeNotification(), platform::windowDidEndLiveResizeNotification() }) {
        platform::NotificationCenter::defaultCenter().post({ name, object, {} });
        platform::NotificationCenter::defaultCenter().post({ name, nullptr, {} });
    }
    EXPECT_TRUE(log().empty());
    EXPECT_TRUE(ledger().empty());
}

TEST_F(Styling, TheFadeInTakesSixHundredthsOfASecond)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->show();
    EXPECT_EQ(window->alphaValue(), 0);
    world.settle();
    EXPECT_EQ(ledger().back(), "w animate alpha 1");
    world.advance(platform::Seconds { 0.03 });
    EXPECT_GT(window->alphaValue(), 0);
    EXPECT_LT(window->alphaValue(), 1);
    world.advance(platform::Seconds { 0.03 });
    EXPECT_EQ(window->alphaValue(), 1);
}

TEST_F(Styling, AWindowThatWasClosedBeforeItsFadeInIsShownAtOnce)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->show();
    window->close();
    world.settle();
    EXPECT_EQ(ledger().back(), "w setAlphaValue: 1");
}

TEST_F(Styling, AFadeInAfterTheManagerHasGoneDoesNothing)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    window->show();
    manager = nullptr;
    world.advance(platform::Seconds { 1 });
    EXPECT_EQ(window->alphaValue(), 0);
}

TEST_F(Styling, NineObservationsInTheirOrder)
{
    std::vector<std::string> names;
    for (auto const& filter : platform::NotificationCenter::defaultCenter().observations(*manager)) {
        EXPECT_EQ(filter.object, nullptr);
        names.push_back(filter.name->rawValue());
    }
    EXPECT_EQ(names,
        (std::vector<std::string> { "_NSWindowWillBecomeVisible", "NSWindowDidBecomeKeyNotification",
            "NSWindowDidResignKeyNotification", "NSWindowWillCloseNotification",
            "NSWindowWillStartLiveResizeNotification", "NSWindowDidEndLiveResizeNotification",
            "Paneweld.BrainstormWindowPreferredHeightDidChange", "Paneweld.BrainstormWindowPinStateDidChange",
            "Paneweld.OpenFileURL" }));
}

TEST_F(Styling, TheManagerAnswersToTenSelectorsByName)
{
    auto const& methods = WindowManager::runtimeClass().methods;
    EXPECT_EQ(methods.size(), 10u);
    for (auto const* const selector : { "observeNotifications", "windowWillBecomeVisible:", "windowDidBecomeKey:",
             "windowDidResignKey:", "windowWillClose:", "windowWillStartLiveResize:", "windowDidEndLiveResize:",
             "brainstormWindowPreferredHeightDidChange:", "brainstormWindowPinStateDidChange:", "openFileURL:" })
        EXPECT_TRUE(methods.contains(selector)) << selector;
    EXPECT_EQ(WindowManager::runtimeClass().name, "PaneweldWindowManager");
}

using StylingDeathTest = Styling;

TEST_F(StylingDeathTest, StylingOffTheMainThreadIsFatal)
{
    testing::FLAGS_gtest_death_test_style = "fast";
    auto const window = world.makeWindow("w", tag("brainstorm", "b1"));
    EXPECT_DEATH(
        std::thread([&] { styleBrainstorm(*window, world); }).join(), "not on the main thread: .*styleBrainstorm");
}
