#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/ProgramOutput.h"
#include "tests/linux/ChildProcess.h"
#include "tests/linux/NotificationStandIn.h"
#include "tests/linux/Pump.h"
#include "tests/linux/ReleasedApp.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/WebServer.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

// Like every test of the finished bundle, not under sanitizers: it is loaded into a program of its own.
#ifndef PANEWELD_TEST_SANITIZED

namespace paneweld_tests {

namespace {

using Lines = std::vector<std::string>;

// A program of its own, from its old version to its new one, as its user sees it.
class Restart : public testing::Test {
protected:
    Restart()
    {
        for (auto const* name : { "DISPLAY", "WAYLAND_DISPLAY", "APPIMAGE", "APPDIR" })
            unsetenv(name);
        setenv("XDG_CONFIG_HOME", (folder.path() + "/config").c_str(), 1);
        // What the app leaves behind comes to us, to be ended.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
    }
    ~Restart() override
    {
        app.end(SIGKILL);
        if (auto const next = processOf("2.0"); next > 0 && kill(next, SIGKILL) == 0)
            waitpid(next, nullptr, 0);
    }

    // The program and what belongs to it, in a folder of the test's.
    std::string writeApp(std::string const& place, std::string const& version)
    {
        auto const info = folder.write(place + "/Info.plist",
            "{ CFBundleIdentifier = \"org.example.Ideas\"; CFBundleVersion = \"" + version + "\"; SUFeedURL = \""
                + server.url("/feed") + "\"; SUPublicEDKey = \"" + key.publicKey()
                + "\"; SUEnableAutomaticChecks = NO; }");
        folder.write(place + "/version", version);
        auto const path = std::filesystem::path(info).parent_path();
        std::filesystem::copy_file(PANEWELD_TEST_UPDATED_APP, path / "Ideas");
        return path;
    }
    // One file that carries the app: what it mounts when it is started, and the program in it.
    std::string image(std::string const& version)
    {
        auto const mounted = folder.path() + "/mounted/" + version;
        writeApp("mounted/" + version + "/usr/bin", version);
        return "#!/bin/sh\nAPPIMAGE=\"$0\" APPDIR=" + mounted + " exec " + mounted + "/usr/bin/Ideas \"$@\"\n";
    }
    void publish(std::string const& archive)
    {
        auto const item = ReleasedApp::item("2.0", archive, key);
        server.set("/archive", { .body = archive });
        std::array<char, 64> date {};
        auto const now = std::time(nullptr);
        std::tm parts {};
        gmtime_r(&now, &parts);
        std::strftime(date.data(), date.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts);
        auto const feed
            = "<rss xmlns:s=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><lastBuildDate>"
            + std::string(date.data()) + "</lastBuildDate><item><s:version>2.0</s:version><enclosure url=\""
            + server.url("/archive") + "\" length=\"" + std::to_string(*item.length) + "\" s:edSignature=\""
            + item.signature + "\"/></item></channel></rss>\n";
        server.set("/feed", { .body = key.signedFeed(feed) });
    }
    Lines lines() const
    {
        auto const text = backends::readFile(report);
        std::istringstream stream(text ? text.value() : std::string());
        Lines all;
        for (std::string line; std::getline(stream, line);)
            all.push_back(line);
        return all;
    }
    // The number of the process that has said that it is this version; 0 for none.
    pid_t processOf(std::string const& version) const
    {
        auto const start = "started " + version + " ";
        for (auto const& line : lines()) {
            if (line.starts_with(start))
                return static_cast<pid_t>(std::stol(line.substr(start.size())));
        }
        return 0;
    }
    void waitFor(std::string const& title)
    {
        auto const isShown = [&] { return desktop.open().starts_with(title + "|"); };
        ASSERT_TRUE(pump(
            {}, [] {}, isShown))
            << title << " is not shown, but " << desktop.open();
    }

    // The user lets it be updated and restarted.
    void updateAndRestart()
    {
        waitFor("Ideas 2.0 is available");
        desktop.press("install");
        waitFor("Ideas 2.0 is installed");
        EXPECT_TRUE(app.isRunning());
        EXPECT_EQ(processOf("1.0"), app.id());
        desktop.press("restart");
        // The new one looks for updates itself.
        waitFor("You’re up to date");
        EXPECT_FALSE(app.isRunning());
        auto const next = processOf("2.0");
        EXPECT_EQ(lines(),
            (Lines { "started 1.0 " + std::to_string(m_first) + " a word", "ended 1.0",
                "started 2.0 " + std::to_string(next) + " a word" }));
    }
    void start(std::string const& program)
    {
        app = ChildProcess({ program, PANEWELD_TEST_BUNDLE, report, "a word" });
        m_first = app.id();
    }

    SessionBus bus;
    NotificationStandIn desktop { bus.address() };
    WebServer server;
    SigningKey key { 1 };
    platform::TemporaryFolder folder;
    std::string const report = folder.path() + "/report";
    ChildProcess app;

private:
    pid_t m_first = 0;
};

} // namespace

TEST_F(Restart, AnAppInAFolderGoesOnAsItsNewVersion)
{
    auto const place = writeApp("apps/Ideas", "1.0");
    writeApp("releases/Ideas", "2.0");
    auto const archive = folder.path() + "/archive.tar.gz";
    ASSERT_TRUE(backends::outputOfProgram(
        { "tar", "--create", "--gzip", "--file=" + archive, "--directory=" + folder.path() + "/releases", "Ideas" },
        std::chrono::steady_clock::now() + std::chrono::seconds { 30 })
                    .hasValue());
    publish(backends::readFile(archive).take());
    start(place + "/Ideas");
    updateAndRestart();
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(processOf("2.0")) + "/exe"), place + "/Ideas");
}

TEST_F(Restart, AnAppInOneFileGoesOnAsItsNewVersion)
{
    auto const place = folder.write("apps/Ideas", image("1.0"));
    chmod(place.c_str(), 0755);
    publish(image("2.0"));
    start(place);
    updateAndRestart();
    // It has mounted itself, and not what its older version had.
    auto const variables = backends::readFile("/proc/" + std::to_string(processOf("2.0")) + "/environ");
    EXPECT_NE(variables.value().find("APPDIR=" + folder.path() + "/mounted/2.0"), std::string::npos);
}

} // namespace paneweld_tests

#endif
