#include "backends/linux/host/ProgramOutput.h"
#include "backends/linux/host/SystemLog.h"
#include "platform/log/OSLog.h"
#include "tests/linux/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sched.h>
#include <sstream>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::Journal;
using backends::SystemLog;
using platform::LogLevel;
using platform::OSLog;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;
using Fields = std::map<std::string, std::string>;

namespace {

// A journal that reads when the test says so.
class JournalStandIn {
public:
    JournalStandIn()
    {
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        listen();
    }
    ~JournalStandIn() { close(m_socket); }
    JournalStandIn(JournalStandIn const&) = delete;
    JournalStandIn& operator=(JournalStandIn const&) = delete;

    std::string path() const { return m_folder.path() + "/socket"; }

    void end()
    {
        close(m_socket);
        std::filesystem::remove(path());
        m_socket = -1;
    }
    void startAgain()
    {
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        listen();
    }

    std::vector<Fields> records() const
    {
        std::vector<Fields> all;
        std::vector<char> bytes(1 << 20);
        while (true) {
            auto const count = recv(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
            if (count < 0)
                return all;
            all.push_back(fieldsOf({ bytes.data(), static_cast<std::size_t>(count) }));
        }
    }

private:
    void listen() const
    {
        sockaddr_un address { .sun_family = AF_UNIX, .sun_path = {} };
        path().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    static Fields fieldsOf(std::string_view datagram)
    {
        Fields fields;
        while (!datagram.empty()) {
            auto const end = datagram.find('\n');
            auto const line = datagram.substr(0, end);
            datagram.remove_prefix(end + 1);
            auto const sign = line.find('=');
            if (sign != std::string_view::npos) {
                fields[std::string(line.substr(0, sign))] = line.substr(sign + 1);
                continue;
            }
            std::uint64_t length = 0;
            for (std::size_t i = 8; i > 0; --i)
                length = length << 8 | static_cast<unsigned char>(datagram[i - 1]);
            fields[std::string(line)] = datagram.substr(8, length);
            datagram.remove_prefix(8 + length + 1);
        }
        return fields;
    }

    platform::TemporaryFolder m_folder;
    int m_socket = -1;
};

// Standard error as a pipe that nobody reads before the test does, and that blocks who writes too much.
class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(m_ends.data(), O_CLOEXEC), 0); }
    ~Pipe()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;

    int writingEnd() const { return m_ends[1]; }
    std::string read() const
    {
        fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
        std::string text(1 << 20, '\0');
        auto const count = ::read(m_ends[0], text.data(), text.size());
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }

private:
    std::array<int, 2> m_ends {};
};

SystemLog::Options optionsFor(std::string const& socket, Pipe const& pipe)
{
    SystemLog::Options options;
    options.journalSocket = socket;
    options.standardError.descriptor = pipe.writingEnd();
    return options;
}

} // namespace

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

namespace {

// The journal that systems ship, in a file system of this process's own. Absent where the machine does not allow that.
class RealJournal {
public:
    bool start()
    {
        if (unshare(CLONE_NEWNS) != 0)
            return false;
        EXPECT_EQ(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0);
        for (std::string const folder : { "/run/systemd", "/run/log" }) {
            std::filesystem::create_directories(folder);
            EXPECT_EQ(mount("none", folder.c_str(), "tmpfs", 0, nullptr), 0);
            std::filesystem::create_directories(folder + "/journal");
        }
        m_journal = ChildProcess({ "/lib/systemd/systemd-journald" });
        return pollUntil([] { return std::filesystem::exists(Journal::usualSocket); });
    }
    // The first record of the subsystem, when it is there.
    std::optional<nlohmann::json> record(std::string const& subsystem)
    {
        std::string first;
        pollUntil([&] {
            auto const output = backends::outputOfProgram(
                { "journalctl", "-D", "/run/log/journal", "-o", "json", "SUBSYSTEM=" + subsystem },
                Clock::now() + std::chrono::seconds(10));
            first = output ? output.value().substr(0, output.value().find('\n')) : "";
            return first.starts_with('{');
        });
        if (first.empty())
            return std::nullopt;
        return nlohmann::json::parse(first);
    }

private:
    template<typename Condition>
    static bool pollUntil(Condition condition)
    {
        auto const end = Clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (Clock::now() > end)
                return false;
            sched_yield();
        }
        return true;
    }

    ChildProcess m_journal;
};

} // namespace

TEST(JournalLog, TheSystemsOwnJournalKeepsTheFields)
{
    RealJournal journal;
    Pipe const pipe;
    if (!journal.start()) {
        // The tests above have shown what is sent; here is a machine that lets nobody look at the rest.
        EXPECT_EQ(errno, EPERM);
        return;
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
