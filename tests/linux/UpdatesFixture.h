#pragma once

#include "backends/linux/Linux.h"
#include "platform/sparkle/SPUStandardUpdaterController.h"
#include "tests/linux/NotificationStandIn.h"
#include "tests/linux/Pump.h"
#include "tests/linux/ReleasedApp.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/WebServer.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// An installed app on a machine with a session bus, notifications and the web, and no X server.
class UpdatesFixture : public testing::Test {
protected:
    // The Info has the feed and the keys; more lines for it.
    void start(std::string const& version, std::vector<std::string> const& keys,
        std::string const& more = "SUEnableAutomaticChecks = NO;")
    {
        app.emplace(version, info(keys) + more);
        if (isOneFile)
            app->becomeImage(version, 0755, info(keys) + more);
        startInstalled();
    }

    std::string info(std::vector<std::string> const& keys) const
    {
        std::string list;
        for (auto const& key : keys)
            list += (list.empty() ? "\"" : ", \"") + key + "\"";
        return "SUFeedURL = \"" + server.url("/feed") + "\"; SUPublicEDKeys = (" + list + "); ";
    }

    // What is on the disk now is started, like after a restart of the app.
    void startInstalled()
    {
        controller.reset();
        platform.reset();
        unsetenv("DISPLAY");
        unsetenv("APPIMAGE");
        unsetenv("APPDIR");
        if (isOneFile) {
            setenv("APPIMAGE", app->path().c_str(), 1);
            setenv("APPDIR", app->mountedFolder().c_str(), 1);
        }
        setenv("XDG_CONFIG_HOME", (app->scratch() + "/config").c_str(), 1);
        backends::LinuxOptions options;
        options.mainBundlePath = isOneFile ? app->mountedBundle() : app->path();
        options.appName = "Ideas";
        auto made = backends::makeLinuxPlatform(options);
        ASSERT_TRUE(made.hasValue());
        platform = made.take();
        controller = platform->makeStandardUpdaterController(platform::StartingUpdater::Yes, {});
        ASSERT_TRUE(controller);
    }

    bool pumpUntil(std::function<bool()> const& condition)
    {
        if (pump(
                { platform->pollableDescriptor() }, [this] { platform->dispatch(); }, condition))
            return true;
        std::string lines;
        for (auto const& line : desktop.shown())
            lines += line + "\n";
        ADD_FAILURE() << "waited in vain; shown so far:\n" << lines;
        return false;
    }

    bool waitFor(std::string const& notice)
    {
        bool const isThere = pumpUntil([&] { return desktop.open() == notice; });
        EXPECT_TRUE(isThere) << notice;
        return isThere;
    }

    // The user presses an action of the notice, or closes it without a word, and the updater has heard of it.
    void press(std::string const& action)
    {
        desktop.press(action);
        pumpUntil([&] { return desktop.isHeard(); });
    }
    void dismiss()
    {
        desktop.dismiss();
        pumpUntil([&] { return desktop.isHeard(); });
    }

    static std::string feed(std::vector<backends::UpdateItem> const& items, std::string const& more = {})
    {
        std::string text
            = "<rss version=\"2.0\" xmlns:s=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>" + more;
        for (auto const& item : items) {
            text += "<item><s:version>" + item.version + "</s:version>"
                + (item.link.empty() ? "" : "<link>" + item.link + "</link>") + "<enclosure url=\"" + item.url
                + "\" length=\"" + std::to_string(item.length.value_or(0)) + "\" s:edSignature=\"" + item.signature
                + "\"/></item>";
        }
        return text + "</channel></rss>\n";
    }

    static std::string builtAgo(std::int64_t seconds)
    {
        auto const time = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()) - seconds;
        std::array<char, 64> text {};
        std::tm parts {};
        gmtime_r(&time, &parts);
        std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts);
        return "<lastBuildDate>" + std::string(text.data()) + "</lastBuildDate>";
    }

    // The feed from now on; signed, for an app in one file.
    void publish(std::vector<backends::UpdateItem> const& items, SigningKey const& key)
    {
        auto const text = feed(items, builtAgo(0));
        server.set("/feed", { .body = isOneFile ? key.signedFeed(text) : text });
    }

    // On the server, as an archive and in the feed, alone.
    backends::UpdateItem release(std::string const& version, SigningKey const& key, std::string const& releaseInfo)
    {
        auto const archive = isOneFile ? ReleasedApp::image(version) : app->archive(version, releaseInfo);
        auto item = ReleasedApp::item(version, archive, key);
        item.url = server.url("/" + version + ".tar.gz");
        server.set("/" + version + ".tar.gz", { .body = archive });
        publish({ item }, key);
        return item;
    }

    // From the user's wish to the new version on the disk.
    void updateTo(std::string const& version)
    {
        controller->checkForUpdates();
        ASSERT_TRUE(waitFor(offerOf(version)));
        press("install");
        ASSERT_TRUE(waitFor(installedNotice(version)));
    }

    static std::string offerOf(std::string const& version)
    {
        return "Ideas " + version + " is available||install=Install Update,later=Later,skip=Skip This Version";
    }
    static std::string installedNotice(std::string const& version)
    {
        return "Ideas " + version + " is installed|It is there when Ideas is started next.|restart=Restart Now";
    }
    bool canCheck() { return controller->updater().canCheckForUpdates(); }

    SessionBus bus;
    NotificationStandIn desktop { bus.address() };
    WebServer server;
    // An AppImage and not a folder. Only then a restart may be asked for: a test is no app to be started again.
    bool isOneFile = false;
    std::optional<ReleasedApp> app;
    std::unique_ptr<backends::LinuxPlatform> platform;
    std::unique_ptr<platform::SPUStandardUpdaterController> controller;
};

} // namespace paneweld_tests
