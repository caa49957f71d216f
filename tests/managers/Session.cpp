#include "tests/managers/Session.h"

#include "tests/linux/Client.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>

namespace paneweld_tests {

namespace {

constexpr int looksForServer = 1000;
constexpr int betweenLooksMilliseconds = 20;

std::vector<WindowManager> const& allWindowManagers()
{
    using Compositor = WindowManager::Compositor;
    static std::vector<WindowManager> const all {
        { "openbox", { "openbox", "--sm-disable" }, Compositor::Separate },
        { "xfwm4", { "xfwm4", "--compositor=on", "--vblank=off" }, Compositor::Own },
        { "metacity", { "metacity", "--sm-disable" }, Compositor::Own },
        { "bare", { "openbox", "--sm-disable" }, Compositor::None },
        { "marco", { "marco", "--sm-disable", "--no-composite" }, Compositor::Separate },
        { "mutter", { "mutter", "--x11", "--sm-disable" }, Compositor::Own, false, true },
        { "kwin", { "kwin_x11" }, Compositor::Own },
        { "icewm", { "icewm" }, Compositor::Separate },
        { "i3", { "i3", "-c", "/dev/null" }, Compositor::Separate },
        { "xwayland", { "mutter", "--headless", "--wayland", "--sm-disable", "--virtual-monitor", "1280x800" },
            Compositor::Own, true },
    };
    return all;
}

} // namespace

std::vector<WindowManager> windowManagersUnderTest()
{
    auto const* const wished = std::getenv("PANEWELD_TEST_MANAGERS");
    std::istringstream names(wished ? wished : "openbox,xfwm4,metacity");
    std::vector<WindowManager> managers;
    for (std::string name; std::getline(names, name, ',');) {
        auto const& all = allWindowManagers();
        auto const found = std::find_if(all.begin(), all.end(), [&](auto const& one) { return one.name == name; });
        if (found != all.end())
            managers.push_back(*found);
    }
    return managers;
}

Session::Session(WindowManager const& manager)
    : m_manager(manager)
{
    for (auto const* name : { "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "XAUTHORITY",
             "DESKTOP_STARTUP_ID", "GTK_THEME", "GTK_CSD", "GDK_SCALE" })
        unsetenv(name);
    setenv("HOME", m_home.path().c_str(), 1);
    auto const kept = m_home.path() + "/.kept";
    std::filesystem::create_directories(kept);
    std::filesystem::permissions(kept, std::filesystem::perms::owner_all);
    for (auto const* name : { "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME" })
        setenv(name, kept.c_str(), 1);
    // No accessibility bus, no settings of others, no graphics card.
    for (auto const* name : { "NO_AT_BRIDGE", "LIBGL_ALWAYS_SOFTWARE" })
        setenv(name, "1", 1);
    setenv("GTK_A11Y", "none", 1);
    setenv("GSK_RENDERER", "cairo", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    m_bus = std::make_unique<SessionBus>(SessionBus::Services::Installed);
    if (m_manager.hasOwnServer) {
        startServerOfManager();
        return;
    }
    m_desktop = std::make_unique<Desktop>();
    m_display = m_desktop->display();
    startWindowManager();
    if (m_manager.compositor == WindowManager::Compositor::Separate)
        m_desktop->startCompositor();
}

Session::~Session()
{
    m_managerWithServer.end(SIGTERM);
    m_desktop.reset();
}

void Session::endWindowManager() { m_desktop->endWindowManager(); }

void Session::startWindowManager()
{
    m_desktop->startWindowManager(m_manager.command);
    if (m_manager.compositor == WindowManager::Compositor::Own)
        m_desktop->awaitCompositor();
    if (!m_manager.paintsBackground)
        return;
    // It is no part of what a panel shows, and comes when it comes.
    Client client(m_display);
    EXPECT_TRUE(client.waitUntil([&] { return client.pixel(0, 0) != client.screen().black_pixel; }));
}

void Session::startServerOfManager()
{
    // It tells the server to a program that it starts, which lives as long as it does.
    auto const told = m_home.path() + "/display";
    auto command = m_manager.command;
    command.insert(command.end(),
        { "--", "sh", "-c",
            "echo \"$DISPLAY $XAUTHORITY\" >" + told + ".new && mv " + told + ".new " + told
                + " && exec tail --pid=$PPID -f /dev/null" });
    m_managerWithServer = ChildProcess(command);
    std::string authority;
    for (int i = 0; i < looksForServer && m_display.empty(); ++i) {
        std::ifstream(told) >> m_display >> authority;
        poll(nullptr, 0, betweenLooksMilliseconds);
    }
    ASSERT_FALSE(m_display.empty()) << "no X server could be started";
    setenv("DISPLAY", m_display.c_str(), 1);
    setenv("XAUTHORITY", authority.c_str(), 1);
    Client client(m_display);
    EXPECT_TRUE(client.waitUntil([&] { return client.checkWindow() != XCB_WINDOW_NONE; }));
}

} // namespace paneweld_tests
