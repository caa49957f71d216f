#include "backends/linux/host/UserProcess.h"
#include "backends/linux/host/ChildProgram.h"
#include "tests/linux/Pump.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <sys/wait.h>
#include <thread>

namespace paneweld_tests {

using backends::ChildProgram;
using backends::EventLoop;
using backends::UserProcess;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds patience { 30 };

bool hasNoChild() { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }

UserProcess started(std::string const& script)
{
    auto process = UserProcess::start({ "sh", "-c", script }, {});
    EXPECT_TRUE(process) << process.error().localizedDescription;
    return process.take();
}

// What the loop tells of a program that writes.
ChildProgram::End endOf(std::string const& script)
{
    auto const loop = EventLoop::create().take();
    std::vector<ChildProgram::End> ends;
    auto const child = ChildProgram::start(*loop, { "sh", "-c", script }, ChildProgram::Output::Kept,
        [&](ChildProgram::End const& end) { ends.push_back(end); });
    EXPECT_TRUE(child) << child.error().localizedDescription;
    pump(
        { loop->pollableDescriptor() }, [&] { loop->dispatch(); }, [&] { return !child || !ends.empty(); });
    loop->dispatch();
    EXPECT_EQ(ends.size(), 1u) << "told once";
    return ends.empty() ? ChildProgram::End {} : ends.front();
}

} // namespace

TEST(AUserProcess, TellsHowItEndedAndLeavesNoZombie)
{
    EXPECT_EQ(started("exit 3").waitUntil(Clock::now() + patience), 3);
    EXPECT_EQ(started("kill -9 $$").waitUntil(Clock::now() + patience), -9);
    EXPECT_EQ(backends::wordsForEnd(3), "exit code 3");
    EXPECT_EQ(backends::wordsForEnd(-9), "signal 9");
    auto waiting = started("exec tail -f /dev/null");
    EXPECT_EQ(waiting.end(), std::nullopt);
    EXPECT_EQ(waiting.waitUntil(Clock::now()), std::nullopt);
    waiting.kill();
    EXPECT_EQ(waiting.end(), -SIGKILL);
    EXPECT_EQ(waiting.end(), -SIGKILL) << "and still knows it";
    EXPECT_TRUE(hasNoChild());
}

TEST(AUserProcess, SaysWhyItCannotStart)
{
    for (auto const* name : { "no-such-program", "/no/such/program" }) {
        auto const process = UserProcess::start({ name }, {});
        ASSERT_FALSE(process);
        EXPECT_EQ(process.error().code, ENOENT);
        EXPECT_EQ(process.error().localizedDescription, std::string(name) + ": No such file or directory");
    }
    platform::TemporaryFolder const folder;
    auto const process = UserProcess::start({ folder.write("plain", "no program") }, {});
    ASSERT_FALSE(process);
    EXPECT_EQ(process.error().code, EACCES);
}

TEST(AUserProcess, InheritsNothingOfTheHost)
{
    // Whoever runs the test may have left some open for everybody.
    std::set<int> wasGiven;
    for (int number = 0; number < 1024; ++number) {
        int const flags = fcntl(number, F_GETFD);
        if (flags >= 0 && !(flags & FD_CLOEXEC))
            wasGiven.insert(number);
    }
    // What a careful host opens, a signal that it blocks and one that it ignores.
    int const kept = open("/dev/null", O_RDONLY | O_CLOEXEC);
    sigset_t blocked {};
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    std::signal(SIGINT, SIG_IGN);
    auto const listed = endOf("read line; ls /proc/$$/fd; :").output;
    std::istringstream numbers(listed);
    for (int number = 0; numbers >> number;)
        EXPECT_TRUE(number <= STDERR_FILENO || wasGiven.contains(number)) << listed;
    EXPECT_TRUE(numbers.eof() && !listed.empty()) << listed;
    EXPECT_EQ(endOf("kill -TERM $$").status, -SIGTERM);
    EXPECT_EQ(endOf("kill -INT $$").status, -SIGINT);
    close(kept);
}

TEST(AUserProcess, EndsWellInAHostThatIgnoresItsChildrenOrWaitsForAll)
{
    std::signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(endOf("echo text").output, "text\n");
    std::signal(SIGCHLD, SIG_DFL);
    std::atomic<bool> isEnding = false;
    std::thread host([&] {
        while (!isEnding)
            waitpid(-1, nullptr, WNOHANG);
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(endOf("echo text").output, "text\n");
    isEnding = true;
    host.join();
}

TEST(AUserProcess, WritesWhereItIsToldInAHostWithoutATerminal)
{
    for (int const standard : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        int const before = fcntl(standard, F_DUPFD_CLOEXEC, 10);
        close(standard);
        auto const output = endOf("echo text; exit 4");
        dup2(before, standard);
        close(before);
        EXPECT_EQ(output.output, "text\n") << standard;
        EXPECT_EQ(output.status, 4);
    }
}

TEST(AUserProcess, ThatWritesWithoutEndIsCutShortAndEnds)
{
    auto const end = endOf("exec yes");
    EXPECT_EQ(end.status, -SIGPIPE);
    EXPECT_GT(end.output.size(), 1024u * 1024);
    EXPECT_LT(end.output.size(), 2u * 1024 * 1024);
}

} // namespace paneweld_tests
