#include "backends/linux/LinuxMail.h"
#include "backends/linux/loop/MainQueue.h"
#include "tests/linux/MailPortalStandIn.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace paneweld_tests {

using backends::LinuxMail;
using platform::NSAppleEventDescriptor;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;
using Lines = std::vector<std::string>;

namespace {

NSAppleEventDescriptor text(std::string words)
{
    return NSAppleEventDescriptor::descriptorWithString(std::move(words));
}

NSAppleEventDescriptor list(Lines const& lines)
{
    auto made = NSAppleEventDescriptor::listDescriptor();
    for (auto const& line : lines)
        made.insertDescriptor(text(line), 0);
    return made;
}

// Mail as a script asks for it, on this thread, with the user's programs as the test makes them.
class Mail : public testing::Test {
protected:
    Mail()
    {
        setenv("FOLDER", folder.path().c_str(), 1);
        options.opener = program("opener", R"(printf '%s\n' "$@" > "$FOLDER/opened")");
        options.composer = program("composer", R"(printf '%s\n' "$@" > "$FOLDER/composed")");
    }

    std::string program(std::string const& name, std::string const& line)
    {
        auto path = folder.write(name, "#!/bin/sh\n" + line + "\n");
        chmod(path.c_str(), 0755);
        return path;
    }
    void startPortal(MailPortalStandIn::Manners manners = {})
    {
        bus = std::make_unique<SessionBus>();
        options.busAddress = bus->address();
        portal = std::make_unique<MailPortalStandIn>(bus->address(), manners);
    }
    // "done", or the error as "-43: ...".
    std::string call(std::string const& name, backends::ScriptFunction::Arguments const& arguments,
        std::chrono::milliseconds time = std::chrono::seconds(60))
    {
        if (!mail)
            mail.emplace(*loop, mainQueue, options, platform::OSLog(records, "test", "mail"));
        for (auto const& function : mail->functions()) {
            if (function.name != name)
                continue;
            auto const reply = function.call(arguments, Clock::now() + time);
            return reply ? "done" : std::to_string(reply.error().code) + ": " + reply.error().localizedDescription;
        }
        return "no such function";
    }
    std::string compose(Lines const& recipients, std::string subject, std::string body, Lines const& files = {})
    {
        return call("composeMail", { list(recipients), text(std::move(subject)), text(std::move(body)), list(files) });
    }
    std::string read(std::string const& name)
    {
        std::ostringstream bytes;
        bytes << std::ifstream(folder.path() + "/" + name).rdbuf();
        return bytes.str();
    }

    platform::TemporaryFolder folder;
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<MailPortalStandIn> portal;
    std::unique_ptr<backends::EventLoop> loop = backends::EventLoop::create().take();
    backends::MainQueue mainQueue { *loop };
    CollectedLog records;
    LinuxMail::Options options;
    std::optional<LinuxMail> mail;
};

} // namespace

TEST_F(Mail, TheDesktopGetsTheMessageWithItsFiles)
{
    startPortal();
    auto const first = folder.write("first, with a comma.txt", "one");
    auto const second = folder.write("späte Datei.txt", "two");
    auto const url = platform::URL::fileURL(second, platform::URL::IsDirectory::No).absoluteString();
    EXPECT_EQ(compose({ "ada@example.org", "bob@example.org" }, "Grüße \"'$(x)", "a\nb\\", { first, url }), "done");
    EXPECT_EQ(portal->calls(),
        Lines { "ComposeEmail to=ada@example.org,bob@example.org subject=Grüße \"'$(x) body=a\nb\\ files=one,two" });
    EXPECT_EQ(compose({}, "", ""), "done");
    EXPECT_EQ(portal->calls().back(), "ComposeEmail to= subject= body=");
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "/opened"));
}

TEST_F(Mail, TextsThatTheBusCannotCarryAreMended)
{
    startPortal();
    EXPECT_EQ(compose({}, "a\xFFz", std::string("b\0c", 3)), "done");
    EXPECT_EQ(portal->calls(), Lines { "ComposeEmail to= subject=a\uFFFDz body=bc" });
}

TEST_F(Mail, AnOlderDesktopGetsTheFirstRecipient)
{
    startPortal({ .version = 2 });
    EXPECT_EQ(compose({ "ada@example.org", "bob@example.org" }, "s", "b"), "done");
    EXPECT_EQ(portal->calls(), Lines { "ComposeEmail only=ada@example.org subject=s body=b" });
}

TEST_F(Mail, TheDesktopOpensAMessage)
{
    startPortal();
    EXPECT_EQ(call("openMail", { text("mid:a%25b@example.org") }), "done");
    EXPECT_EQ(portal->calls(), Lines { "OpenURI mid:a%25b@example.org" });
    EXPECT_EQ(call("openMail", { text("file:///bin/sh") }), "-1750: not the address of a message: file:///bin/sh");
    EXPECT_EQ(portal->calls().size(), 1u);
}

TEST_F(Mail, AUserWhoCancelsIsNotAskedAnotherWay)
{
    startPortal({ .code = 1 });
    EXPECT_EQ(compose({}, "s", "b"), "-128: the user cancelled");
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "/opened"));
}

TEST_F(Mail, AQuestionThatIsNotAnsweredInTimeIsTakenBack)
{
    startPortal({ .neverAnswers = true });
    EXPECT_EQ(call("openMail", { text("mid:a@b") }, std::chrono::milliseconds(300)),
        "-1712: the desktop did not answer in time");
    auto const end = Clock::now() + std::chrono::seconds(10);
    while (portal->count("Close request") == 0 && Clock::now() < end)
        std::this_thread::yield();
    EXPECT_EQ(portal->calls(), (Lines { "OpenURI mid:a@b", "Close request" }));
}

TEST_F(Mail, WithoutADesktopThatCanTheOpenerGetsAnAddress)
{
    for (auto const& manners :
        { MailPortalStandIn::Manners { .code = 2 }, MailPortalStandIn::Manners { .version = 0 } }) {
        startPortal(manners);
        mail.reset();
        EXPECT_EQ(compose({ "a+b@example.org", "c@example.org" }, "50% & mehr?", "eins\nzwei\r\nSchluß"), "done");
        EXPECT_EQ(read("opened"),
            "mailto:a%2Bb@example.org,c@example.org?subject=50%25%20%26%20mehr%3F&body=eins%0D%0Azwei%0D%0ASchlu%C3%"
            "9F\n");
        portal.reset();
    }
    EXPECT_THAT(records.messages.back(), HasSubstr("No such interface"));
}

TEST_F(Mail, WithoutABusTheOpenerGetsAMessageToo)
{
    EXPECT_EQ(call("openMail", { text("mid:a@b") }), "done");
    EXPECT_EQ(read("opened"), "mid:a@b\n");
}

TEST_F(Mail, FilesGoToTheComposerAsTheyAreNamed)
{
    auto const file = folder.write("a b'\"$.txt", "x");
    EXPECT_EQ(compose({}, "", "text", { file }), "done");
    EXPECT_EQ(read("composed"), "--utf8\n--attach\n" + file + "\nmailto:?body=text\n");
}

TEST_F(Mail, AFileThatIsNotThereIsSaidBeforeAnybodyIsAsked)
{
    startPortal();
    EXPECT_EQ(compose({}, "s", "b", { "/nowhere/file" }), "-43: /nowhere/file: No such file or directory");
    EXPECT_EQ(compose({}, "s", "b", { "file" }), "-43: not the path of a file: file");
    EXPECT_EQ(compose({}, "s", "b", { "https://example.org/x" }), "-43: not the path of a file: https://example.org/x");
    EXPECT_TRUE(portal->calls().empty());
}

TEST_F(Mail, AnOpenerThatFailsOrIsNotThereIsTheHandlersError)
{
    options.opener = program("failing", "exit 3");
    EXPECT_EQ(compose({}, "s", "b"), "-1750: " + options.opener + ": exit code 3");
    mail.reset();
    options.opener = folder.path() + "/nobody";
    EXPECT_EQ(compose({}, "s", "b"), "-1750: " + options.opener + ": No such file or directory");
}

TEST_F(Mail, TheOpenerIsTheUsersAndSeesTheUsersEnvironment)
{
    std::filesystem::create_directories(folder.path() + "/bundle");
    std::filesystem::create_directories(folder.path() + "/users");
    auto const bundle = folder.path() + "/bundle";
    program("bundle/opener", "exit 5");
    program("users/opener", R"(tr '\0' '\n' < /proc/$$/environ > "$FOLDER/environment")");
    options.opener = "opener";
    std::string const path = std::getenv("PATH");
    setenv("APPDIR", bundle.c_str(), 1);
    setenv("LD_LIBRARY_PATH", (bundle + "/lib").c_str(), 1);
    setenv("LD_PRELOAD", (bundle + "/hostile.so").c_str(), 1);
    setenv("PATH", (bundle + ":" + folder.path() + "/users:" + path).c_str(), 1);
    EXPECT_EQ(compose({}, "s", "b"), "done");
    auto const environment = "\n" + read("environment");
    EXPECT_NE(environment.find("\nPATH=" + folder.path() + "/users:" + path + "\n"), std::string::npos) << environment;
    EXPECT_EQ(environment.find(bundle), std::string::npos) << environment;
    for (auto const* name : { "\nLD_PRELOAD", "\nLD_LIBRARY_PATH", "\nAPPDIR" })
        EXPECT_EQ(environment.find(name), std::string::npos) << environment;
}

TEST_F(Mail, AMailProgramThatStaysOpenIsLeftAloneAndWaitedForLater)
{
    // It runs until the test ends it.
    mkfifo((folder.path() + "/pipe").c_str(), 0600);
    options.opener = program("staying", R"(echo $$ > "$FOLDER/process"; read line < "$FOLDER/pipe")");
    options.patience = std::chrono::milliseconds(300);
    EXPECT_EQ(compose({}, "s", "b"), "done");
    loop->dispatch();
    auto const process = static_cast<pid_t>(std::stol(read("process")));
    EXPECT_EQ(kill(process, 0), 0);
    std::ofstream(folder.path() + "/pipe") << "end\n";
    auto const end = Clock::now() + std::chrono::seconds(10);
    while (kill(process, 0) == 0 && Clock::now() < end) {
        pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
        poll(&wait, 1, 100);
        loop->dispatch();
    }
    EXPECT_EQ(waitpid(process, nullptr, WNOHANG), -1) << "a zombie is left";
}

} // namespace paneweld_tests
