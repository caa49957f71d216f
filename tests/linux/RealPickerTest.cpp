#include "platform/appkit/NSOpenPanel.h"
#include "tests/linux/LinuxTest.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <optional>

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
// How a chosen row looks: the blue of Adwaita.
constexpr std::uint32_t chosenColour = 0x3584E4;

// The portal and the dialog that desktops ship, on a screen with a window manager, and a user who has a keyboard and a
// mouse.
class RealPicker : public LinuxTest {
protected:
    enum class Portal { Running, Absent };

    void open(Portal portal = Portal::Running)
    {
        desktop = std::make_unique<Desktop>();
        desktop->startWindowManager();
        setenv("HOME", home.path().c_str(), 1);
        std::filesystem::create_directories(home.path() + "/.kept");
        for (auto const* name : { "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME" })
            setenv(name, (home.path() + "/.kept").c_str(), 1);
        setenv("DISPLAY", desktop->display().c_str(), 1);
        setenv("XDG_CURRENT_DESKTOP", "X-GTK", 1);
        setenv("NO_AT_BRIDGE", "1", 1);
        setenv("GTK_A11Y", "none", 1);
        setenv("GSETTINGS_BACKEND", "memory", 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        bus = std::make_unique<SessionBus>();
        if (portal == Portal::Running) {
            backendProgram = ChildProcess({ "/usr/libexec/xdg-desktop-portal-gtk", "--replace" });
            awaitName("org.freedesktop.impl.portal.desktop.gtk");
            frontend = ChildProcess({ "/usr/libexec/xdg-desktop-portal", "--replace" });
            awaitName("org.freedesktop.portal.Desktop");
        }
        toolkit = std::make_unique<Toolkit>(desktop->display());
        onlooker = std::make_unique<Onlooker>(desktop->display());
        backends::LinuxOptions options;
        options.bundleIdentifier = "app.test";
        installBackend(options);
        hearEverything();
        settle();
        // While the dialog is open the host goes on, and the user acts when there is something to act on.
        backend->setNestedIteration([this] {
            toolkit->handleEvents();
            toolkit->pause();
            backend->dispatch();
            ++turns;
            ASSERT_LT(turns, 4000) << "the dialog waits in vain";
            if (steps.empty())
                return;
            // Out of the line first: a step may ask for a dialog of its own.
            auto const step = std::move(steps.front());
            steps.pop_front();
            if (!step())
                steps.push_front(step);
        });
    }

    std::optional<xcb_window_t> dialog()
    {
        auto const listed = toolkit->words(toolkit->root(), "_NET_CLIENT_LIST");
        for (auto const shown : listed.value_or(std::vector<std::uint32_t> {})) {
            if (toolkit->text(shown, "_NET_WM_NAME") == message && toolkit->isViewable(shown))
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
    // Once the dialog has the keyboard.
    void whenOpen()
    {
        then([this] {
            auto const shown = dialog();
            return shown && toolkit->activeWindow() == *shown;
        });
    }
    void chooseEverythingInHome()
    {
        thenDo([] { key("alt+Home"); });
        then([this] {
            auto const shown = toolkit->geometry(*dialog());
            auto const row = [&](int y) { return toolkit->pixel(shown.x + shown.width - 2 * fromRight, shown.y + y); };
            if ((row(firstRow) & 0xFFFFFF) == chosenColour)
                return true;
            key("ctrl+a");
            return false;
        });
    }
    void accept()
    {
        thenDo([this] {
            auto const shown = toolkit->geometry(*dialog());
            toolkit->movePointer(shown.x + shown.width - fromRight, shown.y + shown.height - fromBottom);
            toolkit->button(1, true);
            toolkit->button(1, false);
        });
    }

    static void run(std::string const& command) { EXPECT_EQ(std::system(command.c_str()), 0) << command; }
    static void awaitName(std::string const& name) { run("gdbus wait --session --timeout 20 " + name); }
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
        EXPECT_EQ(panel->runModal(), expected);
        return panel->urls();
    }

    URL folder(std::string const& name) const
    {
        std::filesystem::create_directories(home.path() + "/" + name);
        return URL::fileURL(home.path() + "/" + name, URL::IsDirectory::Yes);
    }

    platform::TemporaryFolder home;
    std::unique_ptr<SessionBus> bus;
    ChildProcess backendProgram;
    ChildProcess frontend;
    std::deque<std::function<bool()>> steps;
    int turns = 0;
};

} // namespace

TEST_F(RealPicker, SeveralFoldersAreChosenInOneDialogWhileTheHostGoesOn)
{
    open();
    std::vector<URL> const expected { folder("apple"), folder("it's a \"berry\""), folder("cherry") };
    whenOpen();
    chooseEverythingInHome();
    thenDo([&] { run("import -window root " PANEWELD_TEST_ARTEFACTS "/picker-portal.png"); });
    accept();
    auto chosen = pick(ModalResponse::OK);
    EXPECT_TRUE(std::is_permutation(chosen.begin(), chosen.end(), expected.begin(), expected.end()));
    EXPECT_GT(turns, 3) << "the host's loop ran meanwhile";
    EXPECT_TRUE(steps.empty());
}

TEST_F(RealPicker, NothingIsChosenByCancelEscapeOrTheWindowsClosing)
{
    open();
    whenOpen();
    thenDo([] { key("alt+c"); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    whenOpen();
    thenDo([] { key("Escape"); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    whenOpen();
    thenDo([&] { toolkit->sendToRoot(*dialog(), "_NET_CLOSE_WINDOW", { 0, 2, 0, 0, 0 }); });
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
        thenDo([&] { key("Escape"); });
        then([&] { return dialog() && dialog() != first && toolkit->activeWindow() == *dialog(); });
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
    thenDo([&] {
        auto const shown = *dialog();
        EXPECT_EQ(toolkit->words(shown, "WM_TRANSIENT_FOR"), std::vector<std::uint32_t> { xid(panel) });
        EXPECT_TRUE(toolkit->isAbove(toolkit->frameOf(shown), toolkit->frameOf(xid(panel))));
        run("import -window root " PANEWELD_TEST_ARTEFACTS "/picker-above-pinned.png");
        key("Escape");
    });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    EXPECT_TRUE(steps.empty());
}

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
    thenDo([&] { run("import -window root " PANEWELD_TEST_ARTEFACTS "/picker-program.png"); });
    accept();
    auto const chosen = pick(ModalResponse::OK);
    EXPECT_TRUE(std::is_permutation(chosen.begin(), chosen.end(), expected.begin(), expected.end()));
    // Pinned as before.
    pumpUntil([&] { return toolkit->hasState(xid(panel), "_NET_WM_STATE_ABOVE"); });
    whenOpen();
    thenDo([] { key("Escape"); });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

} // namespace paneweld_tests
