#include "tests/linux/LogReaders.h"
#include "tests/support/Stated.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::Journal;
using backends::SystemLog;
using platform::LogLevel;
using platform::OSLog;
using testing::HasSubstr;

TEST(JournalLog, ARecordsPartsAreFields)
{
    JournalStandIn const journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    OSLog const channel(log, "com.example.Ideas", "pane-weld");
    channel.error("opened %{public}s for %s", { "a\nb", "Ada" });
    channel.info("update %{public}s", { "2.0" });
    channel.debug("not wanted");
    auto const records = journal.records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0],
        (Fields { { "MESSAGE", "opened a\nb for <private>" }, { "PRIORITY", "3" },
            { "SYSLOG_IDENTIFIER", program_invocation_short_name }, { "SUBSYSTEM", "com.example.Ideas" },
            { "CATEGORY", "pane-weld" }, { "LEVEL", "error" }, { "FORMAT", "opened %{public}s for %s" },
            { "PRIVACY", "private" } }));
    EXPECT_EQ(records[1].at("PRIORITY"), "6");
    EXPECT_EQ(records[1].at("PRIVACY"), "public");
    EXPECT_EQ(pipe.read(), "");
}

TEST(JournalLog, PrivateValuesAreShownWhenAskedForAndStayMarked)
{
    JournalStandIn const journal;
    Pipe const pipe;
    auto options = optionsFor(journal.path(), pipe);
    options.standardError.showsPrivateValues = true;
    SystemLog log(options);
    OSLog(log, "s", "c").error("for %s and %{private}u", { "Ada", std::uint64_t { 7 } });
    auto const records = journal.records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].at("MESSAGE"), "for Ada and 7");
    EXPECT_EQ(records[0].at("PRIVACY"), "private");
}

TEST(JournalLog, WithoutAJournalTheLineGoesToStandardError)
{
    Pipe const pipe;
    SystemLog log(optionsFor("/nowhere/socket", pipe));
    EXPECT_FALSE(log.accepts(LogLevel::Info));
    OSLog(log, "s", "c").error("for %s", { "Ada" });
    EXPECT_EQ(pipe.read(), "paneweld error s:c for <private>\n");
}

TEST(JournalLog, AJournalThatIsStartedAgainIsFoundAndBetweenIsStandardError)
{
    JournalStandIn journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    OSLog const channel(log, "s", "c");
    journal.end();
    channel.error("between");
    EXPECT_EQ(pipe.read(), "paneweld error s:c between\n");
    journal.startAgain();
    channel.error("again");
    ASSERT_EQ(journal.records().size(), 1u);
    EXPECT_EQ(pipe.read(), "");
}

TEST(JournalLog, AJournalThatDoesNotReadHoldsNobodyUpAndIsToldWhatItMissed)
{
    JournalStandIn const journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    OSLog const channel(log, "s", "c");
    constexpr std::size_t count = 20000;
    // Would wait for ever otherwise, and the test with it.
    for (std::size_t i = 0; i < count; ++i)
        channel.error("filling");
    auto const taken = journal.records().size();
    EXPECT_GT(taken, 0u);
    EXPECT_LT(taken, count);
    channel.error("there is place");
    auto const records = journal.records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].at("MESSAGE"), std::to_string(count - taken) + " lines were lost, the journal is slow");
    EXPECT_EQ(records[1].at("MESSAGE"), "there is place");
}

TEST(JournalLog, LongAndBrokenTextsAreCutAndMended)
{
    JournalStandIn const journal;
    Pipe const pipe;
    SystemLog log(optionsFor(journal.path(), pipe));
    OSLog const channel(log, "s", "c");
    channel.error("%{public}s", { std::string(1'000'000, 'x') });
    channel.error("%{public}s", { "a\xFFz" });
    auto const records = journal.records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].at("MESSAGE"), std::string(48 * 1024, 'x'));
    EXPECT_EQ(records[1].at("MESSAGE"), "a\uFFFDz");
}

TEST(StandardErrorLine, AReaderThatDoesNotReadHoldsNobodyUpAndLongLinesAreCut)
{
    Pipe const pipe;
    SystemLog log(optionsFor("", pipe));
    OSLog const channel(log, "s", "c");
    channel.error("%{public}s", { std::string(10'000, 'x') });
    auto const line = pipe.read();
    EXPECT_EQ(line.size(), 4096u);
    EXPECT_TRUE(line.ends_with("xxx...\n"));
    for (int i = 0; i < 20000; ++i)
        channel.error("filling");
    EXPECT_THAT(pipe.read(), HasSubstr("filling\npaneweld error s:c filling\n"));
}

TEST(JournalLog, TheSystemsOwnJournalKeepsTheFields)
{
    RealJournal journal;
    Pipe const pipe;
    if (!journal.start()) {
        // The tests above have shown what is sent; here is a machine that lets nobody look at the rest.
        EXPECT_EQ(errno, EPERM);
        return stateForbidden("start a journal of its own");
    }
    SystemLog log(optionsFor(Journal::usualSocket, pipe));
    OSLog(log, "com.example.Real", "mail").error("two\nlines for %s", { "Ada" });
    auto const record = journal.record("com.example.Real");
    ASSERT_TRUE(record);
    EXPECT_EQ((*record)["MESSAGE"], "two\nlines for <private>");
    EXPECT_EQ((*record)["CATEGORY"], "mail");
    EXPECT_EQ((*record)["LEVEL"], "error");
    EXPECT_EQ((*record)["PRIORITY"], "3");
    EXPECT_EQ((*record)["PRIVACY"], "private");
    EXPECT_EQ((*record)["FORMAT"], "two\nlines for %s");
    EXPECT_EQ((*record)["_PID"], std::to_string(getpid()));
    EXPECT_EQ(pipe.read(), "");
}

} // namespace paneweld_tests
