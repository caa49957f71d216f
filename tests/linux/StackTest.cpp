#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"

namespace paneweld_tests {

class Stack : public LinuxTest {
protected:
    bool isPinned(xcb_window_t window) { return onlooker->hasState(window, "_NET_WM_STATE_ABOVE"); }
};

TEST_F(Stack, AFloatingWindowIsAboveTheOthersAndComesDownAgain)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    auto const other = show({ .title = "other" });
    EXPECT_EQ(panel->level(), platform::windowLevelNormal);
    panel->setLevel(platform::windowLevelFloating);
    panel->orderFrontRegardless();
    ASSERT_TRUE(pumpUntil([&] { return isPinned(id) && onlooker->isAbove(id, xid(other)); }));
    EXPECT_EQ(panel->level(), platform::windowLevelFloating);
    other->makeKeyAndOrderFront();
    other->orderFrontRegardless();
    auto const later = show({ .title = "later" });
    settle();
    EXPECT_TRUE(onlooker->isAbove(id, xid(other)));
    EXPECT_TRUE(onlooker->isAbove(id, xid(later)));
    panel->setLevel(platform::windowLevelNormal);
    ASSERT_TRUE(pumpUntil([&] { return !isPinned(id); }));
    other->orderFrontRegardless();
    EXPECT_TRUE(pumpUntil([&] { return onlooker->isAbove(xid(other), id); }));
}

TEST_F(Stack, OrderingToTheFrontTakesNoKeyboard)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const other = show({ .title = "other" });
    ASSERT_TRUE(pumpUntil([&] { return other->isKeyWindow() && onlooker->isAbove(xid(other), xid(panel)); }));
    panel->orderFrontRegardless();
    ASSERT_TRUE(pumpUntil([&] { return onlooker->isAbove(xid(panel), xid(other)); }));
    settle();
    EXPECT_TRUE(other->isKeyWindow());
    EXPECT_EQ(onlooker->activeWindow(), xid(other));
}

TEST_F(Stack, TheRightToComeForwardIsUsedOnce)
{
    start(With::Nothing);
    auto const main = show({ .title = "main" });
    backend->application().activateIgnoringOtherApps(true);
    auto const panel = show({ .title = "panel" });
    ASSERT_TRUE(pumpUntil([&] { return panel->isKeyWindow(); }));
    show({ .title = "notice" });
    settle();
    EXPECT_TRUE(panel->isKeyWindow());
    // A raise uses it as well.
    backend->application().activateIgnoringOtherApps(true);
    main->makeKeyAndOrderFront();
    ASSERT_TRUE(pumpUntil([&] { return main->isKeyWindow(); }));
    show({ .title = "another notice" });
    settle();
    EXPECT_TRUE(main->isKeyWindow());
}

TEST_F(Stack, APinHoldsOverHidingAndShowing)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    panel->setLevel(platform::windowLevelFloating);
    ASSERT_TRUE(pumpUntil([&] { return isPinned(id); }));
    for (int i = 0; i < 3; ++i) {
        toolkit->withdraw(id);
        ASSERT_TRUE(pumpUntil([&] { return count("close panel") == i + 1; }));
        toolkit->map(id);
        ASSERT_TRUE(pumpUntil([&] { return count("visible panel") == i + 2 && isPinned(id); }));
    }
    toolkit->withdraw(id);
    ASSERT_TRUE(pumpUntil([&] { return count("close panel") == 4; }));
    panel->setLevel(platform::windowLevelNormal);
    toolkit->map(id);
    ASSERT_TRUE(pumpUntil([&] { return count("visible panel") == 5; }));
    settle();
    EXPECT_FALSE(isPinned(id));
    panel->setLevel(platform::windowLevelFloating);
    EXPECT_TRUE(pumpUntil([&] { return isPinned(id); }));
}

TEST_F(Stack, APinSetBeforeMappingHolds)
{
    start(With::WindowManager);
    auto const made = toolkit->make({ .title = "early" });
    ASSERT_TRUE(backend->announceX11Window(made));
    window(made)->setLevel(platform::windowLevelFloating);
    window(made)->setCollectionBehavior(platform::collectionBehaviorCanJoinAllSpaces);
    settle();
    // Toolkits write the states anew when they map.
    xcb_delete_property(toolkit->wire(), made, toolkit->atom("_NET_WM_STATE"));
    toolkit->map(made);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->isViewable(made) && isPinned(made); }));
    EXPECT_TRUE(pumpUntil(
        [&] { return onlooker->words(made, "_NET_WM_DESKTOP") == std::vector<std::uint32_t> { 0xFFFFFFFF }; }));
    window(made)->setCollectionBehavior(0);
    EXPECT_TRUE(
        pumpUntil([&] { return onlooker->words(made, "_NET_WM_DESKTOP") == std::vector<std::uint32_t> { 0 }; }));
}

TEST_F(Stack, APinHoldsOverARestartOfTheWindowManager)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    auto const other = show({ .title = "other" });
    panel->setLevel(platform::windowLevelFloating);
    panel->setCollectionBehavior(platform::collectionBehaviorCanJoinAllSpaces);
    ASSERT_TRUE(pumpUntil([&] { return isPinned(id); }));
    desktop->endWindowManager();
    pumpUntil([&] { return onlooker->checkWindow() == XCB_WINDOW_NONE; });
    settle();
    // The next one finds no trace of what was wished.
    for (auto const* property : { "_NET_WM_STATE", "_NET_WM_DESKTOP" }) {
        xcb_delete_property(toolkit->wire(), id, toolkit->atom(property));
        toolkit->sync();
    }
    desktop->startWindowManager();
    ASSERT_TRUE(pumpUntil([&] { return isPinned(id) && onlooker->isAbove(id, xid(other)); }));
    EXPECT_TRUE(
        pumpUntil([&] { return onlooker->words(id, "_NET_WM_DESKTOP") == std::vector<std::uint32_t> { 0xFFFFFFFF }; }));
    EXPECT_EQ(count("close panel"), 0);
    EXPECT_EQ(count("visible panel"), 1);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(panel->isListed());
}

TEST_F(Stack, AnUnpinThatNobodyHeardHoldsForTheNextWindowManager)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    panel->setLevel(platform::windowLevelFloating);
    ASSERT_TRUE(pumpUntil([&] { return isPinned(id); }));
    // It leaves what it did on the window, where the next one finds it.
    desktop->pauseWindowManager();
    panel->setLevel(platform::windowLevelNormal);
    settle();
    ASSERT_TRUE(isPinned(id));
    desktop->killWindowManager();
    desktop->startWindowManager();
    EXPECT_TRUE(pumpUntil([&] { return !isPinned(id); }));
    EXPECT_EQ(panel->level(), platform::windowLevelNormal);
}

TEST_F(Stack, NothingIsMappedBehindTheToolkitsBack)
{
    start(With::WindowManager);
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    toolkit->withdraw(id);
    ASSERT_TRUE(pumpUntil([&] { return count("close panel") == 1; }));
    panel->makeKeyAndOrderFront();
    panel->orderFrontRegardless();
    settle();
    EXPECT_FALSE(onlooker->isViewable(id));
    EXPECT_EQ(count("visible panel"), 1);
}

TEST_F(Stack, ButtonsAreTakenAwayAndGivenBack)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "buttons" });
    auto const id = xid(shown);
    std::vector<std::uint32_t> const toolkits { 2, 0, 1, 0, 0 };
    toolkit->setWords(id, "_MOTIF_WM_HINTS", toolkit->atom("_MOTIF_WM_HINTS"), toolkits);
    settle();
    shown->standardWindowButton(platform::WindowButton::Zoom)->setHidden(true);
    shown->standardWindowButton(platform::WindowButton::Miniaturize)->setHidden(true);
    EXPECT_TRUE(pumpUntil([&] {
        return onlooker->words(id, "_MOTIF_WM_HINTS") == std::vector<std::uint32_t> { 3, 38, 1, 0, 0 };
    }));
    shown->standardWindowButton(platform::WindowButton::Zoom)->setHidden(false);
    EXPECT_TRUE(pumpUntil([&] {
        return onlooker->words(id, "_MOTIF_WM_HINTS") == std::vector<std::uint32_t> { 3, 38 | 16, 1, 0, 0 };
    }));
    shown->standardWindowButton(platform::WindowButton::Miniaturize)->setHidden(false);
    EXPECT_TRUE(pumpUntil([&] { return onlooker->words(id, "_MOTIF_WM_HINTS") == toolkits; }));
}

} // namespace paneweld_tests
