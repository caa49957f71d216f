#include "paneweld/host.hpp"

#include "platform/foundation/Bundle.h"
#include "tests/linux/MailPortalStandIn.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

using namespace paneweld;
using Clock = std::chrono::steady_clock;
using Lines = std::vector<std::string>;

namespace {

// Mail from a host's notification to the other end, through the library and the bundle as they are built.
class MailRoad : public testing::Test {
protected:
    MailRoad()
    {
        for (auto const* name : { "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" })
            unsetenv(name);
        auto const opener
            = folder.write("xdg-open", "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + folder.path() + "/opened'\n");
        chmod(opener.c_str(), 0755);
        setenv("PATH", (folder.path() + ":" + std::getenv("PATH")).c_str(), 1);
    }

    void start()
    {
        HostOptions options;
        options.frameworkPath = PANEWELD_TEST_BUNDLE;
        options.bundleIdentifier = "com.example.Loading";
        auto started = Host::start(options);
        ASSERT_TRUE(started);
        host = started.take();
        controller = NSBundle::appKitController(*host->plugin());
        ASSERT_TRUE(controller);
    }
    void post(std::string handler, platform::List params)
    {
        ++m_posted;
        ExecuteMailScript const request { std::move(handler), std::move(params),
            [this](auto const& text, auto const& error) {
                std::lock_guard const lock(m_mutex);
                threads.push_back(std::this_thread::get_id());
                times.push_back(Clock::now());
                ends.push_back(
                    std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
                answers.push_back(error ? std::to_string(error->code) + ": " + error->localizedDescription
                                        : text.value_or("nothing"));
                m_changed.notify_all();
            } };
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::executeMailScript(), nullptr, request.userInfo() });
    }
    // Completions come on a thread of their own; the main one has nothing to do with it.
    void wait()
    {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return answers.size() == m_posted; }));
    }

    platform::TemporaryFolder folder;
    std::unique_ptr<Host> host;
    std::shared_ptr<platform::NSObject> controller;
    Lines answers;
    std::vector<std::thread::id> threads;
    std::vector<Clock::time_point> times;
    // The same on the clock of the wall.
    std::vector<double> ends;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_posted = 0;
};

} // namespace

TEST_F(MailRoad, AMessageReachesTheDesktopAndThreeCallsKeepTheirDistance)
{
    paneweld_tests::SessionBus const bus;
    paneweld_tests::MailPortalStandIn const portal(bus.address(), {});
    start();
    auto const file = folder.write("a file.txt", "contents");
    post("composeMessage",
        { "Ada <ada@example.org>; \"Babbage, Charles\" <cb@example.org>", "Ideas", "line\nline", file });
    post("COMPOSEMESSAGE", { "", 5, true });
    post("openMessage", { "<1.2@example.org>" });
    wait();
    EXPECT_EQ(answers, Lines(3, "nothing"));
    EXPECT_EQ(portal.calls(),
        (Lines { "ComposeEmail to=ada@example.org,cb@example.org subject=Ideas body=line\nline files=contents",
            "ComposeEmail to= subject=5 body=true", "OpenURI mid:1.2@example.org" }));
    // On the queue's own thread, all of them, and not on the host's.
    EXPECT_EQ(threads, (std::vector<std::thread::id>(3, threads[0])));
    EXPECT_NE(threads[0], std::this_thread::get_id());
    EXPECT_GE(times[1] - times[0], std::chrono::milliseconds(250));
    EXPECT_GE(times[2] - times[1], std::chrono::milliseconds(250));
}

TEST_F(MailRoad, WithoutADesktopTheUsersOpenerGetsIt)
{
    start();
    post("composeMessage", { "ada@example.org\nbob@example.org", "Ideas" });
    post("openMessage", { "mid:x@y" });
    wait();
    EXPECT_EQ(answers, Lines(2, "nothing"));
    std::ostringstream opened;
    opened << std::ifstream(folder.path() + "/opened").rdbuf();
    EXPECT_EQ(opened.str(), "mailto:ada@example.org,bob@example.org?subject=Ideas\nmid:x@y\n");
}

TEST_F(MailRoad, EachOfThreeCallsStartsAQuarterOfASecondAfterTheOneBeforeItEnded)
{
    folder.write("xdg-open", "#!/bin/sh\ndate +%s.%N >> '" + folder.path() + "/started'\n");
    start();
    for (int i = 0; i < 3; ++i)
        post("openMessage", { "mid:x@y" });
    wait();
    EXPECT_EQ(answers, Lines(3, "nothing"));
    std::ifstream started(folder.path() + "/started");
    std::vector<double> starts { std::istream_iterator<double>(started), {} };
    ASSERT_EQ(starts.size(), 3u);
    for (std::size_t i = 1; i < starts.size(); ++i)
        EXPECT_GE(starts[i] - ends[i - 1], 0.25);
}

TEST_F(MailRoad, TextsOfAnyLengthTakeNoLongerThanTheirLength)
{
    start();
    std::string const megabyte(1 << 20, ' ');
    std::string quotes;
    for (int i = 0; i < 1 << 19; ++i)
        quotes += "\" ";
    auto const before = Clock::now();
    post("composeMessage", { megabyte + "ada@example.org" + megabyte, "s" });
    post("composeMessage", { quotes + "ada@example.org", "s" });
    post("composeMessage", { std::string(1 << 20, '<'), "s" });
    post("composeMessage", { "ada@example.org", "s", "b", std::string(1 << 20, '\n') });
    post("openMessage", { megabyte + "mid:x@y" + megabyte });
    wait();
    EXPECT_EQ(answers[0], "nothing");
    EXPECT_EQ(answers[1], "nothing");
    EXPECT_EQ(answers[2].substr(0, 26), "-1700: not a mail address:");
    EXPECT_EQ(answers[3], "nothing");
    EXPECT_EQ(answers[4], "nothing");
    // Of time that grows with the square one of them alone would take minutes.
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(25));
}

TEST_F(MailRoad, WhatIsNoMailIsAnErrorWithItsNumber)
{
    start();
    post("composeMessage", { "nobody" });
    post("composeMessage", { "--attach=x@y" });
    post("openMessage", { "https://example.org/" });
    post("composeMessage", { "", "", "", "/nowhere/file" });
    post("formatDisk", {});
    wait();
    EXPECT_EQ(answers,
        (Lines { "-1700: not a mail address: nobody", "-1700: not a mail address: --attach=x@y",
            "-1700: not the address of a message: https://example.org/",
            "-43: /nowhere/file: No such file or directory", "-1708: the script has no handler formatDisk" }));
}
