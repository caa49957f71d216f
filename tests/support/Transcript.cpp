#include "tests/support/Transcript.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

void Transcript::add(double seconds, std::string const& line)
{
    char time[32];
    std::snprintf(time, sizeof time, "%6.3f  ", seconds);
    m_lines.push_back(time + line);
}

std::string Transcript::text() const
{
    std::string text;
    for (auto const& line : m_lines)
        text += line + "\n";
    return text;
}

void Transcript::expectToBe(std::string const& name) const
{
    auto const path = std::string(PANEWELD_TEST_TRANSCRIPTS) + "/" + name + ".expected";
    if (std::getenv("PANEWELD_ACCEPT")) {
        std::ofstream(path) << text();
        FAIL() << "wrote " << path << "; run again without PANEWELD_ACCEPT";
    }
    std::ifstream file(path);
    ASSERT_TRUE(file.is_open()) << path;
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(text(), expected.str());
}

std::string Transcript::describe(platform::Notification const& notification)
{
    auto text = notification.name.rawValue();
    if (!notification.userInfo)
        return text;
    for (auto const& [key, value] : *notification.userInfo)
        text += " " + std::string(key) + "=" + value.description();
    return text;
}
