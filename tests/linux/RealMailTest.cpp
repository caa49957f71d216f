#include "platform/applescript/NSAppleScript.h"
#include "tests/linux/MailPortalStandIn.h"
#include "tests/linux/RealDesktopFixture.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <sstream>

namespace paneweld_tests {

using platform::Dictionary;
using platform::NSAppleEventDescriptor;

namespace {

// The script of the finished bundle, called as the plug-in does it: on a thread of its own, while the main one goes on.
class RealMail : public RealDesktop {
protected:
    // A user with a mail program, which writes down what it is given.
    void writeMailProgram() const
    {
        auto const program = home.write(".kept/mailer",
            "#!/bin/sh\nprintf '%s' \"$1\" > '" + given()
                + ".new'\n"
                  "mv '"
                + given() + ".new' '" + given() + "'\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        home.write(".kept/applications/mailer.desktop",
            "[Desktop Entry]\nType=Application\nName=Mailer\nExec=" + program
                + " %u\nMimeType=x-scheme-handler/mailto;x-scheme-handler/mid;\n");
        std::string const schemes = "x-scheme-handler/mailto=mailer.desktop\nx-scheme-handler/mid=mailer.desktop\n";
        home.write(".kept/mimeapps.list", "[Default Applications]\n" + schemes + "[Added Associations]\n" + schemes);
    }
    std::string given() const { return home.path() + "/.kept/given"; }

    // "done", or the error's words.
    std::string call(std::string const& handler, std::vector<std::string> const& arguments)
    {
        auto answer = std::async(std::launch::async, [&] { return runHandler(handler, arguments); });
        pumpUntil([&] {
            if (whileAsked)
                whileAsked();
            return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
        return answer.get();
    }
    std::optional<xcb_window_t> dialogOver(xcb_window_t parent)
    {
        auto const listed = toolkit->words(toolkit->root(), "_NET_CLIENT_LIST");
        for (auto const shown : listed.value_or(std::vector<std::uint32_t> {})) {
            if (toolkit->words(shown, "WM_TRANSIENT_FOR") == std::vector<std::uint32_t> { parent }
                && toolkit->isViewable(shown))
                return shown;
        }
        return std::nullopt;
    }
    // What the mail program was given.
    std::string awaitGiven()
    {
        std::string text;
        pumpUntil([&] {
            std::ostringstream bytes;
            bytes << std::ifstream(given()).rdbuf();
            text = bytes.str();
            return !text.empty();
        });
        std::filesystem::remove(given());
        return text;
    }

    // What the user does meanwhile.
    std::function<void()> whileAsked;

private:
    std::string runHandler(std::string const& handler, std::vector<std::string> const& arguments)
    {
        Dictionary errorInfo;
        auto const file = platform::URL::fileURL(
            PANEWELD_TEST_BUNDLE "/Resources/MailHandlers.scpt", platform::URL::IsDirectory::No);
        auto const script = backend->appleScripts()->initWithContentsOfURL(file, errorInfo);
        auto event = NSAppleEventDescriptor::initWithEventClass(platform::kASAppleScriptSuite,
            platform::kASSubroutineEvent, {}, platform::kAutoGenerateReturnID, platform::kAnyTransactionID);
        event.setDescriptor(NSAppleEventDescriptor::descriptorWithString(handler), platform::keyASSubroutineName);
        auto list = NSAppleEventDescriptor::listDescriptor();
        for (auto const& argument : arguments)
            list.insertDescriptor(NSAppleEventDescriptor::descriptorWithString(argument), 0);
        event.setDescriptor(std::move(list), platform::keyDirectObject);
        bool const isDone = script && script->executeAppleEvent(event, errorInfo);
        return isDone ? "done" : errorInfo[platform::NSAppleScriptErrorMessage].description();
    }
};

} // namespace

TEST_F(RealMail, AMessageReachesTheUsersMailProgramThroughThePortal)
{
    writeMailProgram();
    open();
    auto const file = home.write("a file.txt", "contents");
    EXPECT_EQ(call("composeMessage",
                  { "Ada <ada@example.org>, bob@example.org", "Gr\u00FC\u00DFe & \"more\"?", "one\ntwo 100%", file }),
        "done");
    auto const address = awaitGiven();
    EXPECT_TRUE(address.starts_with("mailto:")) << address;
    for (auto const* part : { "ada@example.org", "bob@example.org", "subject=Gr%C3%BC%C3%9Fe%20%26%20%22more%22%3F",
             "two%20100%25", file.c_str() })
        EXPECT_NE(address.find(part), std::string::npos) << part << " in " << address;
}

TEST_F(RealMail, AMessageThatTheUserHasIsOpenedThroughThePortal)
{
    writeMailProgram();
    open();
    EXPECT_EQ(call("openMessage", { "<1.2@example.org>" }), "done");
    EXPECT_EQ(awaitGiven(), "mid:1.2@example.org");
}

TEST_F(RealMail, AUserWithoutAMailProgramIsToldOverTheHostsWindowAndCancels)
{
    open();
    auto const panel = show();
    panel->makeKeyAndOrderFront();
    pumpUntil([&] { return panel->isKeyWindow(); });
    int looks = 0;
    whileAsked = [&] {
        auto const told = dialogOver(xid(panel));
        constexpr int looksBetweenActs = 100;
        if (!told || looks++ % looksBetweenActs != 0)
            return;
        // A window manager may leave the keyboard where it is; then a person turns to the dialog.
        constexpr std::uint32_t fromPager = 2;
        if (toolkit->activeWindow() != *told)
            toolkit->sendToRoot(*told, "_NET_ACTIVE_WINDOW", { fromPager, 0, 0, 0, 0 });
        else
            run("xdotool key Escape");
    };
    EXPECT_EQ(call("openMessage", { "<1.2@example.org>" }), "the user cancelled");
    EXPECT_GT(looks, 0) << "nobody was told";
}

TEST_F(RealMail, WithoutAPortalTheOpenerOfTheDesktopFindsTheMailProgram)
{
    writeMailProgram();
    open(Portal::Absent);
    EXPECT_EQ(call("composeMessage", { "ada@example.org", "Ideas", "text" }), "done");
    EXPECT_EQ(awaitGiven(), "mailto:ada@example.org?subject=Ideas&body=text");
}

TEST_F(RealMail, WhatTheDesktopAsksIsAskedOverTheWindowThatHasTheKeyboard)
{
    open(Portal::Absent);
    MailPortalStandIn const portal(bus->address(), {});
    EXPECT_EQ(call("openMessage", { "mid:a@b" }), "done");
    EXPECT_EQ(portal.calls().back(), "OpenURI mid:a@b");
    auto const panel = show();
    panel->makeKeyAndOrderFront();
    pumpUntil([&] { return panel->isKeyWindow(); });
    std::array<char, 32> over {};
    std::snprintf(over.data(), over.size(), " over=x11:%x", xid(panel));
    EXPECT_EQ(call("openMessage", { "mid:a@b" }), "done");
    EXPECT_EQ(portal.calls().back(), std::string("OpenURI") + over.data() + " mid:a@b");
    EXPECT_EQ(call("composeMessage", {}), "done");
    EXPECT_EQ(portal.calls().back(), std::string("ComposeEmail") + over.data() + " to= subject= body=");
}

} // namespace paneweld_tests
