#pragma once

#include "platform/log/LogSink.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// A log that a test reads: the messages of what is at least so grave, in the order in which they came.
class CollectedLog : public platform::LogSink {
public:
    explicit CollectedLog(platform::LogLevel least = platform::LogLevel::Debug)
        : m_least(least)
    {
    }

    bool accepts(platform::LogLevel level) const override { return level >= m_least; }
    void write(platform::LogRecord const& record) override { messages.push_back(record.message); }

    std::vector<std::string> messages;

private:
    platform::LogLevel m_least;
};

} // namespace paneweld_tests
