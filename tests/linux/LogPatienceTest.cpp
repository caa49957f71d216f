#include "tests/linux/LogReaders.h"
#include "tests/support/Stated.h"

#include <barrier>
#include <thread>

// A log that nobody reads holds nobody up: what would wait for ever would hold up these tests for ever.

namespace paneweld_tests {

using backends::SystemLog;
using platform::OSLog;

namespace {

constexpr int lines = 4000;

// All at the same moment, as far as a machine can.
void writeFromManyThreads(SystemLog& log, int linesEach, std::size_t length)
{
    constexpr int number = 8;
    std::barrier start(number);
    std::vector<std::thread> threads;
    for (int i = 0; i < number; ++i) {
        threads.emplace_back([&] {
            OSLog const channel(log, "s", "c");
            std::string const text(length, 'x');
            start.arrive_and_wait();
            for (int line = 0; line < linesEach; ++line)
                channel.error("%{public}s", { text });
        });
    }
    for (auto& thread : threads)
        thread.join();
}

} // namespace

TEST(LogPatience, AFullPipeTakesNoThreadWithIt)
{
    // The moment in which two find the last place is short: it is looked for in many pipes.
    for (int round = 0; round < 100; ++round) {
        Pipe const pipe;
        SystemLog log(optionsFor("", pipe));
        // One line fills a page of it, and it has sixteen.
        writeFromManyThreads(log, 4, 4000);
        auto const text = pipe.read();
        ASSERT_GT(text.size(), 4000u);
        // Whole lines, whoever wrote them.
        auto const line = "paneweld error s:c " + std::string(4000, 'x') + "\n";
        for (std::size_t start = 0; start < text.size(); start += line.size())
            ASSERT_EQ(text.substr(start, line.size()), line);
    }
}

TEST(LogPatience, AJournalThatDoesNotReadTakesNoThreadWithIt)
{
    JournalStandIn const journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    writeFromManyThreads(log, lines, 500);
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
        return stateForbidden("start a journal of its own");
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
