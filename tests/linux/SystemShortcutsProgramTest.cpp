#include "backends/linux/host/ProgramOutput.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::outputOfProgram;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto patience = 30s;

bool hasNoChild() { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }

} // namespace

TEST(SystemShortcutsProgram, FailsWithItsOwnWords)
{
    auto const deadline = Clock::now() + patience;
    auto const failed = outputOfProgram({ "sh", "-c", "echo out; echo 'no such thing' >&2; exit 3" }, deadline);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().localizedDescription, "sh: no such thing");
    auto const silent = outputOfProgram({ "sh", "-c", "exit 3" }, deadline);
    ASSERT_FALSE(silent);
    EXPECT_EQ(silent.error().localizedDescription, "sh: failed: exit code 3");
    auto const endless = outputOfProgram({ "yes" }, deadline);
    ASSERT_FALSE(endless);
    EXPECT_EQ(endless.error().code, EFBIG);
    EXPECT_TRUE(hasNoChild());
    // More than a pipe holds.
    auto const large = outputOfProgram({ "sh", "-c", "head -c 300000 /dev/zero" }, deadline);
    ASSERT_TRUE(large);
    EXPECT_EQ(large.value().size(), 300000u);
}

TEST(SystemShortcutsProgram, EndsAtTheDeadlineWithWhatItStarted)
{
    platform::TemporaryFolder const folder;
    auto const file = folder.path() + "/pid";
    auto const output = outputOfProgram(
        { "sh", "-c", "tail -f /dev/null & echo $! > " + file + ".new; mv " + file + ".new " + file + "; wait" },
        Clock::now() + 2s);
    ASSERT_FALSE(output);
    EXPECT_EQ(output.error().code, ETIMEDOUT);
    int id = 0;
    std::ifstream(file) >> id;
    ASSERT_GT(id, 0);
    // It has gone, or does within moments.
    int const descriptor = static_cast<int>(syscall(SYS_pidfd_open, id, 0));
    pollfd wait { descriptor, POLLIN, 0 };
    EXPECT_TRUE(descriptor < 0 || poll(&wait, 1, 10'000) == 1);
    if (descriptor >= 0)
        close(descriptor);
    EXPECT_TRUE(hasNoChild());
}

TEST(SystemShortcutsProgram, IsNotWaitedForInWhatItLeavesBehind)
{
    auto const start = Clock::now();
    auto const output = outputOfProgram({ "sh", "-c", "echo first; tail -f /dev/null & echo $!" }, start + patience);
    ASSERT_TRUE(output);
    EXPECT_LT(Clock::now() - start, patience);
    ASSERT_EQ(output.value().substr(0, 6), "first\n");
    kill(std::stoi(output.value().substr(6)), SIGKILL);
}

TEST(SystemShortcutsProgram, IsReadInAHostThatIgnoresItsChildren)
{
    std::signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i < 20; ++i) {
        auto const output = outputOfProgram({ "echo", "text" }, Clock::now() + patience);
        ASSERT_TRUE(output);
        EXPECT_EQ(output.value(), "text\n");
    }
    std::signal(SIGCHLD, SIG_DFL);
}

} // namespace paneweld_tests
