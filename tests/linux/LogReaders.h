#pragma once

#include "backends/linux/host/ProgramOutput.h"
#include "backends/linux/host/SystemLog.h"
#include "platform/log/OSLog.h"
#include "tests/linux/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

// Who reads the log at its other end.

namespace paneweld_tests {

using Fields = std::map<std::string, std::string>;

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

// The journal that systems ship, in a file system of this process's own. Absent where the machine does not allow that.
class RealJournal {
public:
    bool start()
    {
        if (unshare(CLONE_NEWNS) != 0)
            return false;
        EXPECT_EQ(mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr), 0);
        for (std::string const folder : { "/run/systemd", "/run/log" }) {
            std::filesystem::create_directories(folder);
            EXPECT_EQ(mount("none", folder.c_str(), "tmpfs", 0, nullptr), 0);
            std::filesystem::create_directories(folder + "/journal");
        }
        m_journal = ChildProcess({ "/lib/systemd/systemd-journald" });
        return pollUntil([] { return std::filesystem::exists(backends::Journal::usualSocket); });
    }
    // Stopped, it reads nothing until it goes on, and keeps its socket.
    void stop() { kill(m_journal.id(), SIGSTOP); }
    void goOn() { kill(m_journal.id(), SIGCONT); }
    // The first record of the subsystem, when it is there.
    std::optional<nlohmann::json> record(std::string const& subsystem)
    {
        std::string first;
        pollUntil([&] {
            auto const output = backends::outputOfProgram(
                { "journalctl", "-D", "/run/log/journal", "-o", "json", "SUBSYSTEM=" + subsystem },
                std::chrono::steady_clock::now() + std::chrono::seconds(10));
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
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            sched_yield();
        }
        return true;
    }

    ChildProcess m_journal;
};

inline backends::SystemLog::Options optionsFor(std::string const& socket, Pipe const& pipe)
{
    backends::SystemLog::Options options;
    options.journalSocket = socket;
    options.standardError.descriptor = pipe.writingEnd();
    return options;
}

} // namespace paneweld_tests
