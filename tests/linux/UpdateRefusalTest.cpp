#include "backends/linux/LinuxUpdates.h"
#include "backends/linux/host/BundleDirectory.h"
#include "backends/linux/loop/MainQueue.h"
#include "backends/shared/Updater.h"
#include "tests/linux/Pump.h"
#include "tests/linux/ReleasedApp.h"
#include "tests/linux/WebServer.h"
#include "tests/support/CollectedLog.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::UpdateItem;
using platform::LogLevel;
using platform::NSError;
using Lines = std::vector<std::string>;

namespace {

// A user who wants every update.
class Willing : public backends::UpdateUserDriver {
public:
    explicit Willing(backends::MainQueue& mainQueue)
        : m_mainQueue(mainQueue)
    {
    }
    void showPermissionRequest(std::function<void(std::optional<bool>)>) override { }
    void showUpdate(
        UpdateItem const&, std::optional<NSError> const& problem, std::function<void(Choice)> answered) override
    {
        m_mainQueue.async([answered, choice = problem ? Choice::Later : Choice::Install] { answered(choice); });
    }
    void showInformation(UpdateItem const&, std::function<void(Choice)>) override { }
    void showProgress(UpdateItem const&, double, std::function<void()>) override { }
    void showInstalled(UpdateItem const&, std::function<void()>) override { shown = "installed"; }
    void showNoUpdate() override { shown = "none"; }
    void showError(NSError const& error) override { shown = error.localizedDescription; }
    void bringToFront() override { }
    void dismiss() override { }
    std::string shown;

private:
    backends::MainQueue& m_mainQueue;
};

class NoWorkspace : public platform::NSWorkspace {
public:
    bool openURL(platform::URL const&) override { return false; }
};

// An app whose updates are told of by a server with bad intentions.
class UpdateRefusal : public testing::Test {
protected:
    void start(std::string const& more = {})
    {
        app.emplace("1.0",
            "SUFeedURL = \"" + server.url("/feed") + "\"; SUPublicEDKey = \"" + key.publicKey()
                + "\"; SUEnableAutomaticChecks = NO; " + more);
        unsetenv("APPIMAGE");
        setenv("XDG_CONFIG_HOME", (app->scratch() + "/config").c_str(), 1);
        bundles.setMainBundle(app->path(), std::nullopt);
        world = std::make_unique<backends::LinuxUpdates>(
            backends::LinuxUpdates::Surroundings { *loop, mainQueue, bundles, workspace, "Ideas", "", {} }, log);
        updater
            = std::make_shared<backends::Updater>(*world, user, log, std::weak_ptr<platform::SPUUpdaterDelegate> {});
        updater->start();
    }
    // Release 2.0 as it should be.
    UpdateItem good()
    {
        auto const archive = app->archive("2.0");
        auto item = ReleasedApp::item("2.0", archive, key);
        item.url = server.url("/archive");
        server.set("/archive", { .body = archive });
        return item;
    }
    static std::string feed(UpdateItem const& item, std::string const& more = {})
    {
        return "<rss xmlns:s=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>" + more
            + "<item><s:version>" + item.version + "</s:version><enclosure url=\"" + item.url + "\" length=\""
            + std::to_string(item.length.value_or(0)) + "\" s:edSignature=\"" + item.signature
            + "\"/></item></channel></rss>\n";
    }
    static std::string builtAgo(std::chrono::hours age)
    {
        auto const time = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() - age);
        std::array<char, 64> text {};
        std::tm parts {};
        gmtime_r(&time, &parts);
        std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts);
        return "<lastBuildDate>" + std::string(text.data()) + "</lastBuildDate>";
    }
    // The user asks, and waits until something is said.
    void check()
    {
        records.messages.clear();
        user.shown.clear();
        updater->checkForUpdates();
        EXPECT_TRUE(pump(
            { loop->pollableDescriptor() }, [this] { loop->dispatch(); }, [this] { return !user.shown.empty(); }));
    }
    // Refused, with one line that says why, and the same words to who asked. Nothing has changed.
    void expectRefusal(std::string const& cause)
    {
        check();
        EXPECT_EQ(records.messages, (Lines { "no update: " + cause }));
        EXPECT_EQ(user.shown, cause);
        EXPECT_EQ(app->start(), "1.0") << cause;
        EXPECT_TRUE(app->leftovers().empty()) << cause;
        EXPECT_TRUE(updater->canCheckForUpdates()) << cause;
    }
    void expectRefusal(UpdateItem const& item, std::string const& cause)
    {
        server.set("/feed", { .body = feed(item) });
        expectRefusal(cause);
    }

    SigningKey key { 1 };
    WebServer server;
    std::optional<ReleasedApp> app;
    CollectedLog records { LogLevel::Error };
    platform::OSLog log { records, "org.example.Ideas", "updates" };
    std::unique_ptr<backends::EventLoop> loop = backends::EventLoop::create().take();
    backends::MainQueue mainQueue { *loop };
    backends::BundleDirectory directory { log };
    platform::Bundles bundles { directory };
    NoWorkspace workspace;
    Willing user { mainQueue };
    std::unique_ptr<backends::LinuxUpdates> world;
    std::shared_ptr<backends::Updater> updater;
};

constexpr auto notByAKey = "the update is refused: its signature is not by a key of the app";

} // namespace

TEST_F(UpdateRefusal, OfAnArchiveIsOneLineWithItsCause)
{
    start();
    auto const item = good();
    auto bad = item;
    bad.signature.clear();
    expectRefusal(bad, "the update is refused: it is not signed");
    bad.signature = "c2hvcnQ=";
    expectRefusal(bad, "the update is refused: its signature cannot be read");
    bad.signature = SigningKey(2).sign(app->archive("2.0"));
    expectRefusal(bad, notByAKey);
    bad = item;
    *bad.length += 1;
    expectRefusal(bad, "the download is shorter than the feed says");
    *bad.length -= 2;
    expectRefusal(bad, "the download is longer than the feed says");
    bad.length = 0;
    server.set("/archive", { .body = "" });
    expectRefusal(bad, "the update is refused: it is empty");
    server.set("/archive", { .body = app->archive("2.0").substr(1) });
    expectRefusal(bad, notByAKey);
    server.set("/archive", { .status = 404 });
    expectRefusal(item, item.url + ": the server answers 404");
    server.set("/archive", { .status = 302, .headers = { "Location: /archive" } });
    expectRefusal(item, item.url + ": Number of redirects hit maximum amount");
    server.set("/archive", { .status = 302, .headers = { "Location: file:///etc/hostname" } });
    expectRefusal(item, item.url + ": Unsupported protocol");
    server.set("/archive", { .body = "cut off", .saidLength = static_cast<std::int64_t>(*item.length) });
    expectRefusal(item, item.url + ": Transferred a partial file");
}

TEST_F(UpdateRefusal, OfWhatIsInASignedArchiveIsOneLineWithItsCause)
{
    start();
    auto const tried = [&](std::string const& archive, std::string const& cause) {
        auto item = ReleasedApp::item("2.0", archive, key);
        item.url = server.url("/archive");
        server.set("/archive", { .body = archive });
        expectRefusal(item, cause);
    };
    tried(app->archive("0.9"), "the archive holds version 0.9 and not 2.0");
    tried(app->archive("2.0", "", "org.example.Other"), "the archive holds another app");
}

TEST_F(UpdateRefusal, OfAFeedIsOneLineWithItsCause)
{
    start();
    server.set("/feed", { .status = 500 });
    expectRefusal(server.url("/feed") + ": the server answers 500");
    server.set("/feed", { .body = "<rss><channel>" });
    expectRefusal("the feed cannot be read: line 1: no element found");
    server.set("/feed", { .body = "<html/>" });
    expectRefusal("the feed is no RSS document with a channel");
    auto item = good();
    item.url = "ftp://example.org/archive";
    expectRefusal(item, "an item of the feed has an enclosure without a web address");
    server.set("/feed", { .body = std::string(9'000'000, ' ') });
    expectRefusal("the download is too long");
}

TEST_F(UpdateRefusal, OfASignedFeedIsOneLineWithItsCause)
{
    using std::chrono::hours;
    start("SURequireSignedFeed = YES; SUSignedFeedMaximumAge = 86400;");
    auto const item = good();
    auto const tried = [&](std::string const& bytes, std::string const& cause) {
        server.set("/feed", { .body = bytes });
        expectRefusal("the feed is refused: " + cause);
    };
    tried(feed(item, builtAgo(hours { 1 })), "it is not signed");
    tried(SigningKey(2).signedFeed(feed(item, builtAgo(hours { 1 }))), "its signature is not by a key of the app");
    tried(key.signedFeed(feed(item)), "it does not say when it was built");
    tried(key.signedFeed(feed(item, builtAgo(hours { 25 }))), "it is too old");
    // Built with a wrong clock, which the next release must not suffer from.
    auto older = item;
    older.version = "0.5";
    server.set("/feed", { .body = key.signedFeed(feed(older, builtAgo(hours { -10'000 }))) });
    check();
    EXPECT_EQ(user.shown, "none");
    tried(key.signedFeed(feed(item, builtAgo(hours { 1 }))), "a newer one was here before");
    server.set("/feed", { .body = key.signedFeed(feed(item, builtAgo(hours { 0 }))) });
    check();
    EXPECT_EQ(user.shown, "installed");
    EXPECT_EQ(app->start(), "2.0");
}

} // namespace paneweld_tests
