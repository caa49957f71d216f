#pragma once

#include "tests/linux/LinuxTest.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace paneweld_tests {

// The portal and the dialogs that desktops ship, on a screen with a window manager, with a home folder of the test's
// own.
class RealDesktop : public LinuxTest {
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
    }

    static void run(std::string const& command) { EXPECT_EQ(std::system(command.c_str()), 0) << command; }
    static void awaitName(std::string const& name) { run("gdbus wait --session --timeout 20 " + name); }

    platform::TemporaryFolder home;
    std::unique_ptr<SessionBus> bus;
    ChildProcess backendProgram;
    ChildProcess frontend;
};

} // namespace paneweld_tests
