#include "platform/appkit/NSOpenPanel.h"
#include "tests/linux/RealDesktopFixture.h"
#include "tests/linux/Screenshot.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>

namespace paneweld_tests {

using platform::ModalResponse;
using platform::URL;

namespace {

constexpr auto message = "Choose the folders to share";
constexpr auto prompt = "Share_these";

// A dialog of a toolkit is laid out from its right lower corner.
constexpr int fromRight = 60;
constexpr int fromBottom = 28;
constexpr int firstRow = 85;
constexpr int rowHeight = 23;
// How a chosen row looks: the blue of Adwaita.
constexpr std::uint32_t chosenColour = 0x3584E4;

// A user with a keyboard and a mouse before the dialog that desktops ship.
class RealPicker : public RealDesktop {
protected:
    void open(Portal portal = Portal::Running)
    {
        RealDesktop::open(portal);
        // While the dialog is open the host goes on, and the user acts when there is something to act on.
        backend->setNestedIteration([this] {
            toolkit->handleEvents();
            toolkit->pause();
            backend->dispatch();
            ++turns;
            if (std::chrono::steady_clock::now() > patienceEnd) {
                ADD_FAILURE() << "the dialog waits in vain";
                std::exit(1);
            }
            if (steps.empty())
                return;
            // Out of the line first: a step may ask for a dialog of its own.
            auto const step = std::move(steps.front());
            steps.pop_front();
            if (!step())
                steps.push_front(step);
        });
    }

    std::optional<xcb_window_t> dialog(std::string const& title = message)
    {
        auto const listed = toolkit->words(toolkit->root(), "_NET_CLIENT_LIST");
        for (auto const shown : listed.value_or(std::vector<std::uint32_t> {})) {
            if (!answered.contains(shown) && toolkit->text(shown, "_NET_WM_NAME") == title
                && toolkit->isViewable(shown))
                return shown;
        }
        return std::nullopt;
    }

    // What the user does, in order. A step that is not possible yet is tried again.
    void then(std::function<bool()> step) { steps.push_back(std::move(step)); }
    void thenDo(std::function<void()> work)
    {
        then([work = std::move(work)] {
            work();
            return true;
        });
    }
    // Said by the dialog's program when the dialog is on the screen already.
    bool isTransientFor(xcb_window_t shown, xcb_window_t owner)
    {
        return toolkit->words(shown, "WM_TRANSIENT_FOR") == std::vector<std::uint32_t> { owner };
    }
    // Once the dialog has the keyboard.
    void whenOpen()
    {
        then([this, looks = 0]() mutable { return hasKeyboard(dialog(), looks); });
    }
    // A window manager may leave the keyboard where it is; then a person turns to the dialog.
    bool hasKeyboard(std::optional<xcb_window_t> shown, int& looks)
    {
        constexpr int looksBeforeTurning = 100;
        constexpr std::uint32_t fromPager = 2;
        if (shown && toolkit->activeWindow() != *shown && ++looks % looksBeforeTurning == 0)
            toolkit->sendToRoot(*shown, "_NET_ACTIVE_WINDOW", { fromPager, 0, 0, 0, 0 });
        return shown && toolkit->activeWindow() == *shown;
    }
    // What comes before a new dialog listens is lost, and a person does it again.
    void untilClosed(std::function<void(xcb_window_t)> act)
    {
        then([this, act = std::move(act), first = std::optional<xcb_window_t>(), looks = 0]() mutable {
            auto const shown = dialog();
            first = first ? first : shown;
            if (shown != first)
                return true;
            constexpr int looksBetweenActs = 100;
            if (shown && looks++ % looksBetweenActs == 0)
                act(*shown);
            return false;
        });
    }
    void pressUntilClosed(std::string const& name)
    {
        untilClosed([name](auto) { key(name); });
    }
    void chooseEverythingInHome()
    {
        then([this, choice = Choice()]() mutable { return hasChosenEverything(*dialog(), choice); });
    }
    // How long somebody has been at choosing what is in a dialog.
    struct Choice {
        int looks = 0;
        int looksAtChosenRows = 0;
    };
    bool hasChosenEverything(xcb_window_t shown, Choice& choice)
    {
        // A dialog that goes home lets go of what was chosen before, but not at once: what counts is what stays chosen.
        constexpr int looksThatCount = 20;
        choice.looksAtChosenRows = areRowsChosen(shown) ? choice.looksAtChosenRows + 1 : 0;
        if (choice.looksAtChosenRows > 0)
            return choice.looksAtChosenRows >= looksThatCount;
        constexpr int looksBetweenPresses = 20;
        constexpr int looksBetweenWaysHome = 600;
        if (choice.looks % looksBetweenPresses == 0)
            key(choice.looks % looksBetweenWaysHome == 0 ? "alt+Home" : "ctrl+a");
        ++choice.looks;
        return false;
    }
    // The dialog chooses the first row by itself when it has read a folder, so the last one is looked at too.
    bool areRowsChosen(xcb_window_t window)
    {
        auto const inHome = std::filesystem::directory_iterator(home.path());
        auto const rows = std::count_if(begin(inHome), end(inHome),
            [](auto const& entry) { return !entry.path().filename().string().starts_with('.'); });
        return isRowChosen(window, 0) && isRowChosen(window, static_cast<int>(rows) - 1);
    }
    bool isRowChosen(xcb_window_t window, int row)
    {
        auto const shown = toolkit->geometry(window);
        auto const colour = toolkit->pixel(shown.x + shown.width - 2 * fromRight, shown.y + firstRow + row * rowHeight);
        return (colour & 0xFFFFFF) == chosenColour;
    }
    void clickAccept(xcb_window_t window)
    {
        auto const shown = toolkit->geometry(window);
        toolkit->movePointer(shown.x + shown.width - fromRight, shown.y + shown.height - fromBottom);
        toolkit->button(1, true);
        toolkit->button(1, false);
    }
    void accept()
    {
        untilClosed([this](xcb_window_t shown) { clickAccept(shown); });
    }

    static void key(std::string const& name) { run("xdotool key --clearmodifiers " + name); }

    std::vector<URL> pick(ModalResponse expected)
    {
        auto const panel = backend->makeOpenPanel();
        panel->canChooseDirectories = true;
        panel->canChooseFiles = false;
        panel->allowsMultipleSelection = true;
        panel->directoryURL = URL::fileURL(home.path(), URL::IsDirectory::Yes);
        panel->message = message;
        panel->prompt = prompt;
        turns = 0;
        patienceEnd = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        EXPECT_EQ(panel->runModal(), expected);
        // The answer came before the user saw the dialog go.
        steps.clear();
        if (auto const shown = dialog())
            answered.insert(*shown);
        return panel->urls();
    }

    URL folder(std::string const& name) const
    {
        std::filesystem::create_directories(home.path() + "/" + name);
        return URL::fileURL(home.path() + "/" + name, URL::IsDirectory::Yes);
    }

    std::deque<std::function<bool()>> steps;
    // Dialogs that may be seen for a moment still.
    std::set<xcb_window_t> answered;
    int turns = 0;
    std::chrono::steady_clock::time_point patienceEnd {};
};

} // namespace

TEST_F(RealPicker, SeveralFoldersAreChosenInOneDialogWhileTheHostGoesOn)
{
    open();
    std::vector<URL> const expected { folder("apple"), folder("it's a \"berry\""), folder("cherry") };
    whenOpen();
    chooseEverythingInHome();
    thenDo([&] { Screenshot(*toolkit).keep("picker-portal"); });
    accept();
    auto chosen = pick(ModalResponse::OK);
    EXPECT_TRUE(std::is_permutation(chosen.begin(), chosen.end(), expected.begin(), expected.end()));
    EXPECT_GT(turns, 3) << "the host's loop ran meanwhile";
}

TEST_F(RealPicker, NothingIsChosenByCancelEscapeOrTheWindowsClosing)
{
    open();
    whenOpen();
    pressUntilClosed("alt+c");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    whenOpen();
    pressUntilClosed("Escape");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    whenOpen();
    untilClosed([&](xcb_window_t shown) { toolkit->sendToRoot(shown, "_NET_CLOSE_WINDOW", { 0, 2, 0, 0, 0 }); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(RealPicker, NothingIsChosenWhenTheDialogsProgramDies)
{
    open();
    whenOpen();
    thenDo([&] { backendProgram.end(SIGKILL); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(RealPicker, NothingIsChosenWhenThePortalDies)
{
    open();
    whenOpen();
    thenDo([&] { frontend.end(SIGKILL); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(RealPicker, NothingIsChosenWhenTheScreenGoes)
{
    open();
    auto const owner = show();
    owner->makeKeyAndOrderFront();
    pumpUntil([&] { return owner->isKeyWindow(); });
    whenOpen();
    thenDo([&] {
        // The host's toolkit has nothing to wait for any more.
        backend->setNestedIteration({});
        desktop->endServer();
    });
    auto const panel = backend->makeOpenPanel();
    panel->canChooseDirectories = true;
    panel->message = message;
    patienceEnd = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    EXPECT_EQ(panel->runModal(), ModalResponse::Cancel);
    EXPECT_TRUE(panel->urls().empty());
    EXPECT_FALSE(owner->isKeyWindow());
    // The next one is answered too, though nobody can draw it.
    EXPECT_EQ(backend->makeOpenPanel()->runModal(), ModalResponse::Cancel);
}

TEST_F(RealPicker, NothingHangsOnTheWindowThatTheDialogBelongsTo)
{
    open();
    auto const owner = show();
    owner->makeKeyAndOrderFront();
    pumpUntil([&] { return owner->isKeyWindow(); });
    whenOpen();
    thenDo([&] { toolkit->destroy(xid(owner)); });
    then([&] { return !owner->isListed(); });
    pressUntilClosed("Escape");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(RealPicker, ASecondQuestionFromInsideHasItsOwnDialogAfterTheFirst)
{
    open();
    auto const apple = folder("apple");
    std::vector<std::string> order;
    std::optional<xcb_window_t> first;
    whenOpen();
    then([&] {
        first = dialog();
        // In the middle of the first wait. The first dialog is cancelled, the second one answered.
        pressUntilClosed("Escape");
        then([&, looks = 0]() mutable { return dialog() != first && hasKeyboard(dialog(), looks); });
        chooseEverythingInHome();
        accept();
        EXPECT_EQ(pick(ModalResponse::OK), std::vector<URL> { apple });
        order.emplace_back("second");
        return true;
    });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    order.emplace_back("first");
    EXPECT_EQ(order, (std::vector<std::string> { "second", "first" }));
}

TEST_F(RealPicker, TheDialogIsAboveThePinnedPanelItBelongsTo)
{
    open();
    auto const panel = show();
    panel->setLevel(platform::windowLevelFloating);
    panel->makeKeyAndOrderFront();
    pumpUntil([&] { return panel->isKeyWindow() && toolkit->hasState(xid(panel), "_NET_WM_STATE_ABOVE"); });
    whenOpen();
    then([&] { return isTransientFor(*dialog(), xid(panel)); });
    then([&] { return toolkit->isAbove(toolkit->frameOf(*dialog()), toolkit->frameOf(xid(panel))); });
    thenDo([&] { Screenshot(*toolkit).keep("picker-above-pinned"); });
    pressUntilClosed("Escape");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

// Like every test of the finished bundle, not under sanitizers: it is loaded into a program of its own.
#ifndef PANEWELD_TEST_SANITIZED
TEST_F(RealPicker, AHostOfGtkRepaintsWhileItsDialogIsOpen)
{
    open();
    auto const apple = folder("apple"), berry = folder("berry");
    auto const output = home.path() + "/.kept/output";
    ChildProcess const host({ "/bin/sh", "-c",
        "exec \"" PANEWELD_TEST_GTK_PICKER_HOST "\" \"" PANEWELD_TEST_BUNDLE "\" > \"" + output + "\"" });
    auto const hasSaid = [&](std::string const& text) {
        std::ostringstream said;
        said << std::ifstream(output).rdbuf();
        return said.str().find(text) != std::string::npos;
    };
    toolkit->waitUntil([&] { return hasSaid("live\n"); });
    toolkit->waitUntil([&] { return dialog("picker host").has_value(); });
    auto const window = *dialog("picker host");
    ASSERT_TRUE(toolkit->waitUntil([&] { return toolkit->activeWindow() == window; }));
    auto const place = toolkit->geometry(window);
    auto const click = [&](int x, int y) {
        toolkit->movePointer(x, y);
        toolkit->button(1, true);
        toolkit->button(1, false);
    };
    auto const middle = place.x + place.width / 2;
    // A window may have the keyboard before it is seen, and as long a click goes through it.
    constexpr std::uint32_t blueOfBothColours = 0x0000FF;
    ASSERT_TRUE(
        toolkit->waitUntil([&] { return (toolkit->pixel(middle, place.y + 50) & 0x00FFFF) == blueOfBothColours; }));
    click(middle, place.y + 50);
    auto const title = "Choose the folders that this app may read.";
    int looks = 0;
    toolkit->waitUntil([&] { return hasKeyboard(dialog(title), looks); });
    ASSERT_TRUE(dialog(title));
    EXPECT_TRUE(toolkit->waitUntil([&] { return isTransientFor(*dialog(title), window); }));
    // It opens over its window.
    run("xdotool windowmove " + std::to_string(*dialog(title)) + " 0 0");
    toolkit->waitUntil([&] {
        auto const moved = toolkit->geometry(*dialog(title));
        return moved.x + moved.width < place.x;
    });
    // Both colours are seen, and again.
    for (int i = 0; i < 5; ++i) {
        auto const seen = toolkit->pixel(middle, place.y + 150);
        EXPECT_TRUE(toolkit->waitUntil([&] { return toolkit->pixel(middle, place.y + 150) != seen; }));
    }
    Screenshot(*toolkit).keep("picker-gtk-host");
    Choice choice;
    ASSERT_TRUE(toolkit->waitUntil([&] { return hasChosenEverything(*dialog(title), choice); }));
    looks = 0;
    EXPECT_TRUE(toolkit->waitUntil([&] {
        constexpr int looksBetweenClicks = 100;
        if (auto const shown = dialog(title); shown && looks++ % looksBetweenClicks == 0)
            clickAccept(*shown);
        return hasSaid("answer " + apple.absoluteString() + " " + berry.absoluteString() + "\n");
    }));
}

#endif

TEST_F(RealPicker, WithoutAPortalAProgramOfTheDesktopAsks)
{
    open(Portal::Absent);
    auto const panel = show();
    panel->setLevel(platform::windowLevelFloating);
    panel->makeKeyAndOrderFront();
    pumpUntil([&] { return panel->isKeyWindow() && toolkit->hasState(xid(panel), "_NET_WM_STATE_ABOVE"); });
    std::vector<URL> const expected { folder("a |b"), folder("two\nlines"), folder("caf\u00E9") };
    whenOpen();
    thenDo([&] {
        EXPECT_TRUE(toolkit->isAbove(toolkit->frameOf(*dialog()), toolkit->frameOf(xid(panel))));
        EXPECT_EQ(panel->level(), platform::windowLevelFloating);
    });
    chooseEverythingInHome();
    thenDo([&] { Screenshot(*toolkit).keep("picker-program"); });
    accept();
    auto const chosen = pick(ModalResponse::OK);
    EXPECT_TRUE(std::is_permutation(chosen.begin(), chosen.end(), expected.begin(), expected.end()));
    // Pinned as before.
    pumpUntil([&] { return toolkit->hasState(xid(panel), "_NET_WM_STATE_ABOVE"); });
    whenOpen();
    pressUntilClosed("Escape");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

} // namespace paneweld_tests
