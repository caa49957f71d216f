#include "backends/linux/host/Relaunch.h"
#include "tests/linux/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::Launch;
using backends::launchAfter;
using platform::Seconds;

namespace {

constexpr Seconds aWhile { 60 };

// What is launched writes to the standard output that this process has meanwhile.
class Output {
public:
    Output()
        : m_before(dup(STDOUT_FILENO))
    {
        EXPECT_EQ(pipe2(m_ends.data(), O_CLOEXEC), 0);
        dup2(m_ends[1], STDOUT_FILENO);
    }
    ~Output()
    {
        restore();
        close(m_ends[0]);
    }
    Output(Output const&) = delete;
    Output& operator=(Output const&) = delete;

    // All of it, when nobody can write any more.
    std::string read()
    {
        restore();
        std::string text;
        std::array<char, 4096> bytes {};
        while (true) {
            auto const count = ::read(m_ends[0], bytes.data(), bytes.size());
            if (count <= 0)
                return text;
            text.append(bytes.data(), static_cast<std::size_t>(count));
        }
    }

private:
    void restore()
    {
        if (m_before < 0)
            return;
        dup2(m_before, STDOUT_FILENO);
        close(std::exchange(m_before, -1));
        close(std::exchange(m_ends[1], -1));
    }

    int m_before;
    std::array<int, 2> m_ends {};
};

class Relaunch : public testing::Test {
protected:
    Relaunch()
    {
        launch.program
            = folder.write("next", "#!/bin/sh\nprintf '%s,' \"$@\"; echo \"$GREETING$DESKTOP_STARTUP_ID\"\n");
        chmod(launch.program.c_str(), 0755);
        launch.arguments = { "ideas", "--one", "two words" };
        launch.environment = { "GREETING=hello", "DESKTOP_STARTUP_ID=long-ago" };
    }

    platform::TemporaryFolder folder;
    // Stands for the app that runs.
    ChildProcess app { { "sleep", "100" } };
    Launch launch;
};

} // namespace

TEST_F(Relaunch, StartsTheNextWhenTheLastHasEnded)
{
    Output output;
    ASSERT_FALSE(launchAfter(app.id(), launch, aWhile));
    ASSERT_TRUE(app.isRunning());
    app.end(SIGTERM);
    EXPECT_EQ(output.read(), "--one,two words,hello\n");
}

TEST_F(Relaunch, IsOffWhenTheAppGoesOn)
{
    Output output;
    ASSERT_FALSE(launchAfter(app.id(), launch, Seconds { 0.05 }));
    // Comes to an end while the app does not.
    EXPECT_EQ(output.read(), "");
    EXPECT_TRUE(app.isRunning());
}

TEST_F(Relaunch, KeepsNothingOpenMeanwhile)
{
    std::array<int, 2> ends {};
    // As a careless host makes them: open in every program that it starts.
    ASSERT_EQ(pipe(ends.data()), 0);
    Output output;
    ASSERT_FALSE(launchAfter(app.id(), launch, aWhile));
    close(ends[1]);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 0);
    close(ends[0]);
    app.end(SIGTERM);
    EXPECT_EQ(output.read(), "--one,two words,hello\n");
}

TEST_F(Relaunch, SaysWhatCannotBeStarted)
{
    launch.program = folder.path() + "/nothing";
    auto const problem = launchAfter(app.id(), launch, aWhile);
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->localizedDescription, launch.program + ": No such file or directory");
}

TEST_F(Relaunch, KnowsHowThisProcessWasStarted)
{
    setenv("SET_LATER", "1", 1);
    auto const own = Launch::ofThisProcess();
    EXPECT_EQ(own.program.substr(own.program.rfind('/')), std::string("/") + program_invocation_short_name);
    ASSERT_FALSE(own.arguments.empty());
    EXPECT_EQ(own.arguments.front(), program_invocation_name);
    EXPECT_EQ(std::count(own.environment.begin(), own.environment.end(), "SET_LATER=1"), 0);
    auto const path = std::string("PATH=") + std::getenv("PATH");
    EXPECT_EQ(std::count(own.environment.begin(), own.environment.end(), path), 1);
}

} // namespace paneweld_tests
