#include "paneweld/host.hpp"

#include "platform/foundation/Bundle.h"
#include "platform/runtime/Class.h"
#include "platform/runtime/ClassRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

using namespace paneweld;
using platform::NSObject;
using platform::Value;

namespace {

std::string outputOf(std::string const& command)
{
    std::string output;
    auto* const pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer {};
    while (std::fgets(buffer.data(), buffer.size(), pipe))
        output += buffer.data();
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

// The libraries that a file asks for when it is loaded.
std::set<std::string> neededLibraries(std::string const& path)
{
    std::set<std::string> libraries;
    auto const listing = outputOf("readelf -d '" + path + "'");
    for (std::size_t at = 0; (at = listing.find("Shared library: [", at)) != std::string::npos;) {
        at += 17;
        libraries.insert(listing.substr(at, listing.find(']', at) - at));
    }
    return libraries;
}

// A host without a display, as in a service or a bare terminal.
class Loading : public testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
    }

    std::unique_ptr<Host> start()
    {
        HostOptions options;
        options.frameworkPath = PANEWELD_TEST_BUNDLE;
        options.bundleIdentifier = "com.example.Loading";
        auto host = Host::start(options);
        EXPECT_TRUE(host) << (host ? "" : host.error().localizedDescription);
        return host ? host.take() : nullptr;
    }
};

} // namespace

TEST_F(Loading, AHostFindsThePlugInAndBringsItToLife)
{
    auto const host = start();
    auto const plugin = host->plugin();
    ASSERT_TRUE(plugin);
    EXPECT_EQ(std::filesystem::path(plugin->bundlePath()).filename(), "Paneweld.framework");
    auto const controller = NSBundle::appKitController(*plugin);
    ASSERT_TRUE(controller);
    ASSERT_TRUE(controller->classDescription());
    EXPECT_EQ(controller->classDescription()->name, "PaneweldAppKitController");
}

TEST_F(Loading, TheUpdaterIsMadeByNameAndStarted)
{
    auto const host = start();
    auto const updater = NSBundle::updateController(*host->plugin());
    ASSERT_TRUE(updater);
    EXPECT_EQ(platform::perform(*updater, "canCheckForUpdates"), platform::Value(false));
    // This program says nowhere which version it is, so it has no updates.
    EXPECT_TRUE(platform::perform(*updater, "startUpdater"));
    EXPECT_EQ(platform::perform(*updater, "canCheckForUpdates"), platform::Value(false));
    EXPECT_TRUE(NSBundle::appKitController(*host->plugin()));
}

TEST_F(Loading, TheMachineHasAName)
{
    auto const host = start();
    auto const name = NSBundle::macHostName(*host->plugin());
    ASSERT_TRUE(name);
    EXPECT_FALSE(name->empty());
}

TEST_F(Loading, HostAndPlugInShareOneNotificationCentre)
{
    auto const host = start();
    auto const controller = NSBundle::appKitController(*host->plugin());
    std::optional<platform::NSError> answer;
    platform::NotificationCenter::defaultCenter().post({ NotificationName::executeMailScript(), nullptr,
        ExecuteMailScript { "h", {}, [&](auto const&, auto const& error) { answer = error; } }.userInfo() });
    // The answer comes on the runner's own thread, so it is asked for through one more piece of work there; the
    // completion of the second call proves that the first one ran.
    std::atomic<bool> isDone = false;
    platform::NotificationCenter::defaultCenter().post({ NotificationName::executeMailScript(), nullptr,
        ExecuteMailScript { "h", {},
            [&](auto&&...) {
                isDone = true;
                isDone.notify_one();
            } }
            .userInfo() });
    isDone.wait(false);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->localizedDescription, "the script has no handler h");
}

TEST_F(Loading, TypesAreTheSameOnBothSidesOfTheBorder)
{
    auto const host = start();
    ASSERT_FALSE(host->plugin()->loadAndReturnError());
    auto const* const description
        = platform::ClassRegistry::shared().classNamed(host->plugin()->bundlePath(), "QuorvelWindowIdentifier");
    ASSERT_TRUE(description);
    auto const made = platform::perform(*description, "initWithId:type:localizedTitle:", { "b1", "brainstorm", "t" });
    EXPECT_TRUE(std::dynamic_pointer_cast<WindowIdentifier>(made->asObject()));
    auto const* const manager = platform::ClassRegistry::shared().classFromString("PaneweldWindowManager");
    ASSERT_TRUE(manager);
    auto const object = manager->allocInit();
    EXPECT_TRUE(platform::perform(*object, "observeNotifications"));
}

TEST_F(Loading, TheShortcutIsToldToThePlugInAndItsTruthToTheHost)
{
    auto const host = start();
    auto const controller = NSBundle::appKitController(*host->plugin());
    // There is no server here: nothing works, and nothing pretends to.
    using platform::HotKeyResult;
    EXPECT_EQ(host->shortcutTruth().lastRegistration, HotKeyResult::None);
    int changes = 0;
    host->setShortcutTruthHandler([&] { ++changes; });
    auto const update = [](bool isEnabled) {
        platform::NotificationCenter::defaultCenter().post({ NotificationName::updateGlobalNewBrainstormShortcut(),
            nullptr, UpdateGlobalNewBrainstormShortcut { 45, 0x100, isEnabled }.userInfo() });
    };
    update(true);
    EXPECT_EQ(host->shortcutTruth().availability, platform::HotKeyAvailability::Unavailable);
    EXPECT_EQ(host->shortcutTruth().lastRegistration, HotKeyResult::Unavailable);
    host->dispatch();
    EXPECT_EQ(changes, 1);
    update(false);
    EXPECT_EQ(host->shortcutTruth().lastRegistration, HotKeyResult::None);
    auto const* const exported = platform::ClassRegistry::shared().classFromString("PaneweldGlobalShortcutController");
    ASSERT_TRUE(exported);
    EXPECT_TRUE(exported->allocInit());
}

TEST_F(Loading, TheStatusItemsRequestsReachTheHost)
{
    auto const host = start();
    auto const controller = NSBundle::appKitController(*host->plugin());
    auto const* const exported = platform::ClassRegistry::shared().classFromString("PaneweldStatusItemController");
    ASSERT_TRUE(exported);
    // One more than the plug-in's own, as a host may make: its actions can be performed by name.
    auto const item = exported->allocInit();
    ASSERT_TRUE(item);
    int requests = 0;
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { NotificationName::openNewWindow(), nullptr, {} }, [&](auto const&) { ++requests; });
    EXPECT_TRUE(platform::perform(*item, "openBrainstormWindow"));
    EXPECT_EQ(requests, 1);
}

TEST_F(Loading, TextsComeInTheUsersLanguage)
{
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    setenv("LANGUAGE", "de", 1);
    auto const host = start();
    EXPECT_EQ(host->plugin()->localizedString("folder_picker_prompt", "", ""), "Zugriff erlauben");
}

TEST_F(Loading, EveryLanguageHasEveryText)
{
    auto const host = start();
    for (auto const& folder : std::filesystem::directory_iterator(PANEWELD_TEST_RESOURCES)) {
        if (folder.path().extension() != ".lproj")
            continue;
        auto const table = outputOf("cat '" + (folder.path() / "Localizable.strings").string() + "'");
        for (auto const* const key : { "folder_picker_message", "folder_picker_prompt", "status_item_menu_open",
                 "status_item_menu_new_brainstorm", "settings", "status_item_menu_sign_in",
                 "status_item_menu_check_updates", "status_item_menu_quit" })
            EXPECT_NE(table.find(std::string("\"") + key + "\" = \""), std::string::npos) << folder.path() << key;
    }
}

TEST_F(Loading, TheModuleShowsItsVersionAndItsEntryAndNothingElse)
{
    auto const host = start();
    ASSERT_FALSE(host->plugin()->loadAndReturnError());
    auto* const module = dlopen((std::string(PANEWELD_TEST_BUNDLE) + "/Paneweld").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_TRUE(module);
    auto const* const number = static_cast<double const*>(dlsym(module, "PaneweldVersionNumber"));
    auto const* const text = static_cast<char const*>(dlsym(module, "PaneweldVersionString"));
    ASSERT_TRUE(number && text);
    EXPECT_EQ(std::string(text), PANEWELD_TEST_VERSION);
    EXPECT_EQ(std::string(libraryVersion()), PANEWELD_TEST_VERSION);
    EXPECT_EQ(*number, std::stod(PANEWELD_TEST_VERSION));
    EXPECT_EQ(
        outputOf("nm -D --defined-only '" PANEWELD_TEST_BUNDLE "/Paneweld' | awk '{print $3}' | sort | tr '\\n' ' '"),
        "PaneweldVersionNumber PaneweldVersionString PlatformModuleRegister ");
}

TEST_F(Loading, TheLibraryNeedsTheRuntimesXcbAndSystemdAndNothingElse)
{
    for (auto const& library : neededLibraries(PANEWELD_TEST_LIBRARY)) {
        auto const isAllowed = library.starts_with("libxcb") || library.starts_with("libsystemd.so")
            || library.starts_with("libstdc++.so") || library.starts_with("libgcc_s.so")
            || library.starts_with("libc.so") || library.starts_with("libm.so") || library.starts_with("ld-linux");
        EXPECT_TRUE(isAllowed) << library;
    }
    for (auto const& library : neededLibraries(PANEWELD_TEST_BUNDLE "/Paneweld"))
        EXPECT_FALSE(library.starts_with("libxcb") || library.starts_with("libsystemd")) << library;
}

// Two copies in one library would each keep half of a connection.
TEST_F(Loading, WhatSpeaksToTheXServerIsInsideOrShared)
{
    auto const needed = neededLibraries(PANEWELD_TEST_LIBRARY);
    auto const shared = std::count_if(
        needed.begin(), needed.end(), [](auto const& library) { return library.starts_with("libxcb"); });
    EXPECT_TRUE(shared == 0 || shared == 8) << shared;
    EXPECT_EQ(outputOf("nm -D --defined-only '" PANEWELD_TEST_LIBRARY "' | awk '$3 ~ /^(xcb_|Xau|Xdmcp)/'"), "");
}

TEST_F(Loading, ASecondCopyOfTheLibraryIsRefused)
{
    auto const copy = std::filesystem::temp_directory_path() / ("paneweld-" + std::to_string(getpid()))
        / std::filesystem::path(PANEWELD_TEST_LIBRARY).filename();
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(PANEWELD_TEST_LIBRARY, copy);
    ASSERT_TRUE(dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL)) << dlerror();
    auto const host = Host::start();
    std::filesystem::remove_all(copy.parent_path());
    ASSERT_FALSE(host);
    EXPECT_NE(host.error().localizedDescription.find("more than once"), std::string::npos);
}

TEST_F(Loading, APlugInForAnotherVersionOfTheLibraryIsRefusedWithTheReason)
{
    HostOptions options;
    options.frameworkPath = PANEWELD_TEST_MISMATCHED;
    options.mainBundlePath = "/nonexistent";
    auto const host = Host::start(options);
    ASSERT_TRUE(host);
    auto const plugin = host.value()->plugin();
    ASSERT_TRUE(plugin);
    EXPECT_EQ(NSBundle::appKitController(*plugin), nullptr);
    auto const error = plugin->loadAndReturnError();
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("version 0.0.1"), std::string::npos) << error->localizedDescription;
}

TEST_F(Loading, ASecondHostIsRefused)
{
    auto const host = start();
    auto const second = Host::start();
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().localizedDescription, "a host was started in this process already");
}

TEST_F(Loading, WithoutAnXServerThereAreNoWindowsAndAllElseWorks)
{
    auto const host = start();
    EXPECT_EQ(host->windowReach(), WindowReach::Unreachable);
    EXPECT_FALSE(host->announceWindow(1));
    EXPECT_EQ(host->window(1), nullptr);
    EXPECT_FALSE(host->beginWindowMove(1, 0, 0, 1));
    EXPECT_GE(host->pollableDescriptor(), 0);
    host->dispatch();
}

TEST_F(Loading, WithoutThePlugInTheHostGoesOnAlone)
{
    HostOptions options;
    options.frameworkPath = "/nonexistent/Paneweld.framework";
    options.mainBundlePath = "/nonexistent";
    auto const host = Host::start(options);
    ASSERT_TRUE(host);
    EXPECT_EQ(host.value()->plugin(), nullptr);
}
