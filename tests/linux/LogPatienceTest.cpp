#include "tests/linux/LogReaders.h"

#include <atomic>
#include <thread>

// A log that nobody reads holds nobody up: what would wait for ever would hold up these tests for ever.

namespace paneweld_tests {

using backends::SystemLog;
using platform::OSLog;

namespace {

constexpr int lines = 4000;

void writeFromManyThreads(SystemLog& log)
{
    constexpr int number = 8;
    std::vector<std::thread> threads;
    for (int i = 0; i < number; ++i) {
        threads.emplace_back([&log] {
            OSLog const channel(log, "s", "c");
            for (int line = 0; line < lines; ++line)
                channel.error("%{public}s", { std::string(line % 3000, 'x') });
        });
    }
    for (auto& thread : threads)
        thread.join();
}

} // namespace

TEST(LogPatience, AFullPipeTakesNoThreadWithIt)
{
    Pipe const pipe;
    SystemLog log(optionsFor("", pipe));
    writeFromManyThreads(log);
    // Whole lines, whoever wrote them.
    auto const text = pipe.read();
    EXPECT_TRUE(text.ends_with('\n'));
    for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
        ASSERT_EQ(text.substr(start, 19), "paneweld error s:c ") << start;
}

TEST(LogPatience, AJournalThatDoesNotReadTakesNoThreadWithIt)
{
    JournalStandIn const journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    writeFromManyThreads(log);
    EXPECT_FALSE(journal.records().empty());
    EXPECT_EQ(pipe.read(), "");
}

TEST(LogPatience, ARealJournalThatIsStoppedIsToldAfterwardsWhatItMissed)
{
    RealJournal journal;
    Pipe const pipe;
    if (!journal.start()) {
        // The stand-in above has shown the same; this machine lets nobody start another journal.
        EXPECT_EQ(errno, EPERM);
        return;
    }
    SystemLog log(optionsFor(backends::Journal::usualSocket, pipe));
    OSLog const channel(log, "com.example.Patient", "c");
    journal.stop();
    for (int line = 0; line < lines; ++line)
        channel.debug("not wanted");
    for (int line = 0; line < lines; ++line)
        channel.error("filling");
    journal.goOn();
    ASSERT_TRUE(journal.record("com.example.Patient"));
    OSLog(log, "com.example.After", "c").error("there is place");
    auto const missed = journal.record("com.example.After");
    ASSERT_TRUE(missed);
    // Said before the line that found place again.
    EXPECT_TRUE((*missed)["MESSAGE"].get<std::string>().ends_with(" lines were lost, the journal is slow"));
}

} // namespace paneweld_tests
