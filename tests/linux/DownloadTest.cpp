#include "backends/linux/host/Download.h"
#include "backends/linux/host/FeedDownload.h"
#include "backends/shared/UpdateWorld.h"
#include "tests/linux/WebServer.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::Download;
using platform::NSError;
using platform::Seconds;

namespace {

class DownloadTest : public testing::Test {
protected:
    DownloadTest() { download.maximum = 1'000'000; }

    // The words of the failure, or none.
    std::string fetch(std::string const& path)
    {
        received.clear();
        download.url = path.find("://") == std::string::npos ? server.url(path) : path;
        auto const problem = backends::fetch(download, [&](std::string_view piece) {
            received += piece;
            return true;
        });
        code = problem ? problem->code : 0;
        return problem ? problem->localizedDescription : std::string();
    }

    WebServer server;
    Download download;
    std::string received;
    std::int64_t code = 0;
};

} // namespace

TEST_F(DownloadTest, BringsTheBytesAndTellsHowFarItIs)
{
    std::string const body(300'000, 'x');
    server.set("/archive", { .body = body });
    download.length = body.size();
    std::vector<double> progress;
    download.progress = [&](double fraction) { progress.push_back(fraction); };
    EXPECT_EQ(fetch("/archive"), "");
    EXPECT_EQ(received, body);
    ASSERT_FALSE(progress.empty());
    EXPECT_LE(progress.size(), 101u);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_LE(progress.back(), 1);
}

TEST_F(DownloadTest, SaysWhatTheServerSays)
{
    EXPECT_EQ(fetch("/nothing"), server.url("/nothing") + ": the server answers 404");
    EXPECT_EQ(received, "");
    server.set("/broken", { .body = "sorry", .status = 500 });
    EXPECT_EQ(fetch("/broken"), server.url("/broken") + ": the server answers 500");
    EXPECT_NE(fetch("http://127.0.0.1:1/"), "");
    EXPECT_NE(fetch("file:///etc/hostname"), "");
    EXPECT_EQ(received, "");
}

TEST_F(DownloadTest, FollowsRedirectsButNotForEver)
{
    server.set("/here", { .body = "bytes" });
    server.set("/there", { .status = 302, .headers = { "Location: /here" } });
    server.set("/round", { .status = 302, .headers = { "Location: /round" } });
    server.set("/file", { .status = 302, .headers = { "Location: file:///etc/hostname" } });
    EXPECT_EQ(fetch("/there"), "");
    EXPECT_EQ(received, "bytes");
    EXPECT_NE(fetch("/round"), "");
    EXPECT_EQ(server.requests().size(), 2 + 6u);
    EXPECT_NE(fetch("/file"), "");
    EXPECT_EQ(received, "");
}

TEST_F(DownloadTest, NeverGoesFromHttpsToAnythingLess)
{
    WebServer secure(WebServer::Language::Https);
    server.set("/plain", { .body = "anybody's" });
    secure.set("/there", { .body = "bytes" });
    secure.set("/within", { .status = 302, .headers = { "Location: /there" } });
    secure.set("/out", { .status = 302, .headers = { "Location: " + server.url("/plain") } });
    server.set("/in", { .status = 302, .headers = { "Location: " + secure.url("/there") } });
    // Who it says it is, it says alone.
    EXPECT_NE(fetch(secure.url("/there")), "");
    EXPECT_EQ(received, "");
    EXPECT_TRUE(secure.requests().empty());
    setenv("SSL_CERT_FILE", secure.certificateFile().c_str(), 1);
    EXPECT_EQ(fetch(secure.url("/there")), "");
    EXPECT_EQ(fetch(secure.url("/within")), "");
    EXPECT_EQ(fetch("/in"), "");
    EXPECT_EQ(received, "bytes");
    EXPECT_NE(fetch(secure.url("/out")), "");
    EXPECT_EQ(received, "");
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/in" }));
}

TEST_F(DownloadTest, AServerThatStallsIsLeft)
{
    server.set("/slow", { .body = "some bytes", .stallsAfter = 4 });
    download.stallTime = Seconds { 1 };
    EXPECT_NE(fetch("/slow"), "");
    EXPECT_EQ(received, "some");
    download.stallTime = Seconds { 30 };
    download.deadline = Seconds { 0.3 };
    EXPECT_NE(fetch("/slow"), "");
}

TEST_F(DownloadTest, WhatIsCutOffIsNoDownload)
{
    server.set("/cut", { .body = "half of it", .saidLength = 20 });
    EXPECT_NE(fetch("/cut"), "");
    download.length = 20;
    EXPECT_NE(fetch("/cut"), "");
    // The server does not say how much it is; the feed does.
    server.set("/silent", { .body = "half of it", .saidLength = -1 });
    EXPECT_EQ(fetch("/silent"), "the download is shorter than the feed says");
    download.length.reset();
    EXPECT_EQ(fetch("/silent"), "");
}

TEST_F(DownloadTest, MoreThanWasPromisedIsNotTaken)
{
    server.set("/long", { .body = std::string(5000, 'x') });
    server.set("/silent", { .body = std::string(5000, 'x'), .saidLength = -1 });
    download.length = 4000;
    EXPECT_EQ(fetch("/long"), "the download is longer than the feed says");
    EXPECT_EQ(fetch("/silent"), "the download is longer than the feed says");
    EXPECT_LE(received.size(), 4000u);
    download.length.reset();
    download.maximum = 4000;
    EXPECT_EQ(fetch("/long"), "the download is too long");
    EXPECT_EQ(fetch("/silent"), "the download is too long");
    EXPECT_LE(received.size(), 4000u);
}

TEST_F(DownloadTest, CanBeCancelled)
{
    server.set("/slow", { .body = "some bytes", .stallsAfter = 4 });
    std::atomic<bool> isCancelled = false;
    download.isCancelled = &isCancelled;
    download.url = server.url("/slow");
    auto const problem = backends::fetch(download, [&](std::string_view) {
        isCancelled = true;
        return true;
    });
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->code, backends::updateCancelled);
}

TEST_F(DownloadTest, ASinkThatIsFullEndsIt)
{
    server.set("/archive", { .body = "bytes" });
    download.url = server.url("/archive");
    auto const problem = backends::fetch(download, [](std::string_view) { return false; });
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->localizedDescription, "the download cannot be written");
}

TEST_F(DownloadTest, AFeedNeedsAnAddressAndAKey)
{
    backends::UpdateSettings settings;
    settings.publicKeys = { "key" };
    EXPECT_EQ(backends::downloadFeed(settings, {}).error().localizedDescription, "the app names no feed of updates");
    settings.feedURL = server.url("/feed");
    settings.publicKeys.clear();
    EXPECT_EQ(
        backends::downloadFeed(settings, {}).error().localizedDescription, "the app has no key to check updates with");
    EXPECT_TRUE(server.requests().empty());
    settings.publicKeys = { "key" };
    server.set("/feed", { .body = "<rss><channel/></rss>" });
    EXPECT_TRUE(backends::downloadFeed(settings, {}).hasValue());
    server.set("/feed", { .body = "<html>Log in first</html>" });
    EXPECT_EQ(backends::downloadFeed(settings, {}).error().localizedDescription,
        "the feed is no RSS document with a channel");
}

} // namespace paneweld_tests
