#include "tests/managers/HostProcess.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace paneweld_tests {

HostProcess::HostProcess(std::string const& toolkit)
{
    std::array<int, 2> commands {};
    std::array<int, 2> news {};
    EXPECT_EQ(pipe2(commands.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(news.data(), O_CLOEXEC), 0);
    // A host that died is seen by what it does not say.
    std::signal(SIGPIPE, SIG_IGN);
    m_program = ChildProcess(
        { PANEWELD_TEST_HOSTS "/" + toolkit + "_host", PANEWELD_TEST_BUNDLE }, -1, { commands[0], news[1] });
    close(commands[0]);
    close(news[1]);
    m_toProgram = commands[1];
    m_fromProgram = news[0];
    fcntl(m_fromProgram, F_SETFL, O_NONBLOCK);
}

HostProcess::~HostProcess()
{
    close(m_toProgram);
    close(m_fromProgram);
}

void HostProcess::tell(std::string const& line) const
{
    auto const bytes = line + "\n";
    EXPECT_EQ(write(m_toProgram, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::vector<std::string> const& HostProcess::lines()
{
    std::array<char, 4096> bytes {};
    ssize_t count = 0;
    while ((count = read(m_fromProgram, bytes.data(), bytes.size())) > 0)
        m_unfinished.append(bytes.data(), static_cast<std::size_t>(count));
    for (auto end = m_unfinished.find('\n'); end != std::string::npos; end = m_unfinished.find('\n')) {
        m_lines.push_back(m_unfinished.substr(0, end));
        m_unfinished.erase(0, end + 1);
    }
    return m_lines;
}

int HostProcess::count(std::string const& line)
{
    auto const& said = lines();
    return static_cast<int>(std::count(said.begin(), said.end(), line));
}

xcb_window_t HostProcess::window(std::string const& id)
{
    auto const start = "opened " + id + " ";
    xcb_window_t found = XCB_WINDOW_NONE;
    for (auto const& line : lines()) {
        if (line.starts_with(start))
            found = static_cast<xcb_window_t>(std::stoul(line.substr(start.size())));
    }
    return found;
}

std::string HostProcess::story()
{
    std::string story;
    for (auto const& line : lines())
        story += line + "\n";
    return story;
}

} // namespace paneweld_tests
