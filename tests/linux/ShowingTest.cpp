#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSScreen.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

using platform::Rect;

class Showing : public LinuxTest { };

TEST_F(Showing, FindsAWindowAndReportsItOnce)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "first" });
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_TRUE(shown->canBecomeKeyWindow());
    EXPECT_EQ(shown->title(), "first");
    EXPECT_EQ(shown->className(), "TestApp");
    EXPECT_EQ(backend->x11Window(*shown), xid(shown));
    settle();
    EXPECT_EQ(count("visible first"), 1);
    EXPECT_EQ(backend->application().windows().size(), 1u);
}

TEST_F(Showing, FindsAWindowWithoutAWindowManagerToo)
{
    start(With::Nothing);
    auto const shown = show({ .title = "bare" });
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(count("visible bare"), 1);
    toolkit->withdraw(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return count("close bare") == 1; }));
    toolkit->map(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return count("visible bare") == 2; }));
}

TEST_F(Showing, ReadsATitleThatComesBetweenMakingAndMapping)
{
    start(With::WindowManager);
    std::string titleAtReport;
    onNews = [&](auto const& kind, platform::NSWindow& window) {
        if (kind == "visible")
            titleAtReport = window.title();
    };
    auto const made = toolkit->make({ .title = "early" });
    ASSERT_TRUE(pumpUntil([&] { return window(made) != nullptr; }));
    // As toolkits do: the title follows, and the map request is in the same batch.
    toolkit->setTitle(made, "late");
    toolkit->map(made);
    ASSERT_TRUE(pumpUntil([&] { return !news.empty(); }));
    EXPECT_EQ(titleAtReport, "late");
}

TEST_F(Showing, ReportsWindowsThatWereThereBeforeOnceAndOnlyFromTheLoop)
{
    desktop = std::make_unique<Desktop>();
    desktop->startWindowManager();
    Toolkit early(desktop->display());
    auto const managed = early.make({ .title = "there before" });
    early.map(managed);
    ASSERT_TRUE(early.waitUntil([&] { return early.words(managed, "WM_STATE").has_value(); }));
    auto const hidden = early.make({ .title = "hidden" });
    early.sync();

    ASSERT_NO_FATAL_FAILURE(installBackend());
    toolkit = std::make_unique<Toolkit>(desktop->display());
    onlooker = std::make_unique<Onlooker>(desktop->display());
    hearEverything();
    early.sync();
    EXPECT_TRUE(news.empty());
    ASSERT_TRUE(pumpUntil([&] { return count("visible there before") == 1; }));
    settle();
    EXPECT_EQ(count("visible there before"), 1);
    EXPECT_EQ(count("visible hidden"), 0);
    EXPECT_NE(window(hidden), nullptr);
    // Nobody hides what the user sees already.
    EXPECT_EQ(early.opacity(managed), 1);

    // Nor was anybody here told of the frame that it has, which moves without a word to the window inside.
    auto const left = window(managed)->frame().x;
    auto place = onlooker->geometry(onlooker->frameOf(managed));
    place.x += 40;
    onlooker->placeFrameOf(managed, place);
    EXPECT_TRUE(pumpUntil([&] { return window(managed)->frame().x == left + 40; }));
}

TEST_F(Showing, LeavesWindowsThatAreNoOrdinaryOnesOfThisProcessAlone)
{
    start(With::WindowManager);
    auto const menu = toolkit->make({ .title = "menu", .isOverrideRedirect = true });
    toolkit->map(menu);
    // A child process is another program.
    auto const foreign = fork();
    if (foreign == 0) {
        Toolkit stranger(desktop->display());
        stranger.map(stranger.make({ .title = "foreign" }));
        pause();
        _exit(0);
    }
    xcb_window_t theirs = XCB_WINDOW_NONE;
    ASSERT_TRUE(pumpUntil([&] {
        auto const list = onlooker->words(onlooker->root(), "_NET_CLIENT_LIST");
        if (list && !list->empty())
            theirs = list->front();
        return theirs != XCB_WINDOW_NONE && onlooker->isViewable(theirs);
    }));
    settle();
    EXPECT_TRUE(news.empty());
    EXPECT_TRUE(backend->application().windows().empty());
    EXPECT_EQ(window(menu), nullptr);
    EXPECT_FALSE(backend->announceX11Window(theirs));
    EXPECT_FALSE(backend->announceX11Window(onlooker->root()));
    EXPECT_FALSE(backend->announceX11Window(0x7FFFFFF));
    settle();
    EXPECT_EQ(onlooker->opacity(theirs), 1);
    kill(foreign, SIGKILL);
    waitpid(foreign, nullptr, 0);
}

TEST_F(Showing, TakesAWindowAwayAndBringsBackTheSameObject)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "again" });
    auto const id = xid(shown);
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    toolkit->withdraw(id);
    ASSERT_TRUE(pumpUntil([&] { return count("close again") == 1; }));
    EXPECT_FALSE(shown->isVisible());
    EXPECT_FALSE(shown->isListed());
    EXPECT_FALSE(shown->isKeyWindow());
    EXPECT_TRUE(backend->application().windows().empty());
    ASSERT_TRUE(pumpUntil([&] { return onlooker->opacity(id) == 0; }));
    toolkit->map(id);
    ASSERT_TRUE(pumpUntil([&] { return count("visible again") == 2; }));
    EXPECT_EQ(window(id), shown);
    EXPECT_TRUE(pumpUntil([&] { return onlooker->opacity(id) == 1; }));
}

TEST_F(Showing, AWindowThatHasTheKeyboardAlreadyIsKeyAfterItsReport)
{
    start(With::Nothing);
    auto const made = toolkit->make({ .title = "early" });
    ASSERT_TRUE(pumpUntil([&] { return window(made) != nullptr; }));
    news.clear();
    // Changing the look of a window looks after who has the keyboard as well.
    onNews = [](auto const& kind, platform::NSWindow& reported) {
        if (kind == "visible")
            stylePanel(reported);
    };
    toolkit->map(made);
    xcb_set_input_focus(toolkit->wire(), XCB_INPUT_FOCUS_PARENT, made, XCB_CURRENT_TIME);
    toolkit->sync();
    ASSERT_TRUE(pumpUntil([&] { return window(made)->isKeyWindow(); }));
    EXPECT_EQ(news, (std::vector<std::string> { "visible early", "key early" }));
}

TEST_F(Showing, AnIconifiedWindowIsListedAndNotVisibleAndReportedWhenItComesBack)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "icon" });
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    toolkit->iconify(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return !shown->isVisible() && !shown->isKeyWindow(); }));
    settle();
    EXPECT_TRUE(shown->isListed());
    EXPECT_EQ(count("close icon"), 0);
    news.clear();
    toolkit->map(xid(shown));
    // Whether it gets the keyboard is the window manager's affair; if so, it is after the report.
    ASSERT_TRUE(pumpUntil([&] { return shown->isVisible(); }));
    settle();
    EXPECT_EQ(news.front(), "visible icon");
    EXPECT_EQ(count("visible icon"), 1);
    // Withdrawn while iconified is closed as well.
    toolkit->iconify(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return !shown->isVisible(); }));
    toolkit->withdraw(xid(shown));
    EXPECT_TRUE(pumpUntil([&] { return count("close icon") == 1; }));
}

TEST_F(Showing, AWindowThatGoesToItsIconWhileItIsShownIsSeenWhenItComesBack)
{
    start(With::WindowManager);
    std::vector<xcb_window_t> made;
    for (int i = 0; i < 20; ++i) {
        made.push_back(toolkit->make({ .title = "quick" }));
        toolkit->map(made.back());
        // Before, amid and after its first report.
        for (int turn = 0; turn < i % 5; ++turn) {
            onlooker->sync();
            backend->dispatch();
        }
        toolkit->iconify(made.back());
    }
    // Not viewable is also what the window manager has not come to yet, and a second map would overtake the icon there.
    constexpr std::uint32_t iconic = 3;
    for (auto const id : made)
        EXPECT_TRUE(pumpUntil([&] {
            auto const state = onlooker->words(id, "WM_STATE");
            return state && !state->empty() && state->front() == iconic && !onlooker->isViewable(id);
        }));
    for (auto const id : made)
        toolkit->map(id);
    for (auto const id : made) {
        EXPECT_TRUE(pumpUntil([&] {
            return onlooker->isViewable(id) && onlooker->opacity(id) == 1 && !onlooker->hasEmptyShape(id);
        })) << std::hex
            << id;
    }
}

TEST_F(Showing, ADestroyedWindowIsClosedAndForgotten)
{
    start(With::WindowManager);
    auto const shown = show({ .title = "gone" });
    auto const id = xid(shown);
    ASSERT_TRUE(pumpUntil([&] { return shown->isKeyWindow(); }));
    news.clear();
    toolkit->destroy(id);
    ASSERT_TRUE(pumpUntil([&] { return count("close gone") == 1; }));
    EXPECT_EQ(news, (std::vector<std::string> { "resign gone", "close gone" }));
    EXPECT_EQ(window(id), nullptr);
    EXPECT_FALSE(backend->x11Window(*shown));
    EXPECT_TRUE(backend->application().windows().empty());
    // What is asked of it now goes nowhere.
    shown->setFrame({ 0, 0, 10, 10 }, platform::Display::Yes);
    shown->makeKeyAndOrderFront();
    shown->close();
    settle();
}

// A frame around it hides its end from everybody but those who listen at the window itself.
TEST_F(Showing, AWindowThatIsGoneBeforeItCanBeListenedToIsForgotten)
{
    start(With::WindowManager);
    show();
    auto const brief = toolkit->make({ .title = "brief" });
    toolkit->map(brief);
    ASSERT_TRUE(onlooker->waitUntil([&] { return onlooker->frameOf(brief) != brief; }));
    toolkit->destroy(brief);
    settle();
    settle();
    EXPECT_EQ(window(brief), nullptr);
    EXPECT_EQ(backend->application().windows().size(), 1u);
    EXPECT_EQ(count("visible brief"), 0);
}

TEST_F(Showing, TitlesAreTakenAsTheyAre)
{
    start(With::WindowManager);
    std::string const invalid = "caf\xE9 \xFF";
    std::string const endless(1 << 20, 'x');
    auto const shown = show({ .title = invalid });
    EXPECT_EQ(shown->title(), invalid);
    toolkit->setTitle(xid(shown), endless);
    ASSERT_TRUE(pumpUntil([&] { return shown->title().size() == endless.size(); }));
    EXPECT_EQ(shown->title(), endless);
    shown->setTitle(endless + "y");
    ASSERT_TRUE(pumpUntil([&] { return onlooker->text(xid(shown), "_NET_WM_NAME") == endless + "y"; }));
    EXPECT_EQ(onlooker->text(xid(shown), "WM_NAME"), endless + "y");
    shown->setTitle("short");
    EXPECT_EQ(shown->title(), "short");
    settle();
    EXPECT_EQ(shown->title(), "short");
}

TEST_F(Showing, ATitleOfOldClientsIsLatin1)
{
    start(With::WindowManager);
    auto const made = toolkit->make({ .title = "" });
    xcb_delete_property(toolkit->wire(), made, toolkit->atom("_NET_WM_NAME"));
    xcb_change_property(
        toolkit->wire(), XCB_PROP_MODE_REPLACE, made, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 4, "caf\xE9");
    toolkit->map(made);
    EXPECT_TRUE(pumpUntil([&] { return count("visible caf\u00E9") == 1; }));
}

TEST_F(Showing, StylesPlacesAndFadesIn)
{
    start(With::WindowManager);
    onNews = [](auto const& kind, platform::NSWindow& window) {
        if (kind == "visible")
            stylePanel(window);
    };
    auto const panel = show({ .title = "panel" });
    auto const id = xid(panel);
    EXPECT_EQ(panel->frame(), (Rect { 320, 84, 640, 91 }));
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto& group) {
            group.setDuration(platform::Seconds { 0.06 });
            panel->animator().setAlphaValue(1);
        },
        [&] { hasEnded = true; });
    ASSERT_TRUE(pumpUntil([&] { return hasEnded && !toolkit->hasEmptyShape(id) && toolkit->opacity(id) == 1; }));
    EXPECT_EQ(toolkit->geometry(id), (Geometry { 320, 800 - 84 - 91, 640, 91 }));
    EXPECT_EQ(toolkit->words(id, "_MOTIF_WM_HINTS"), (std::vector<std::uint32_t> { 2, 0, 0, 0, 0 }));
    EXPECT_TRUE(toolkit->words(id, "_KDE_NET_WM_BLUR_BEHIND_REGION"));
    EXPECT_TRUE(
        pumpUntil([&] { return toolkit->words(id, "_NET_WM_DESKTOP") == std::vector<std::uint32_t> { 0xFFFFFFFF }; }));
}

} // namespace paneweld_tests
