#pragma once

#include "platform/dispatch/UnfairLock.h"
#include "platform/log/LogSink.h"

#include <optional>
#include <string>

namespace backends {

// The log on standard error: one line a record, "paneweld level subsystem:category message". A line that nobody takes
// at once is lost, and an overlong one is cut, so that no caller ever waits. Any thread.
class StandardErrorLog : public platform::LogSink {
public:
    struct Options {
        // The least level that is written; absent writes nothing.
        std::optional<platform::LogLevel> level = platform::LogLevel::Error;
        bool showsPrivateValues = false;
        int descriptor = 2;
    };

    // PANEWELD_LOG is "debug", "info", "default", "error" or "off"; the given level when it is not set or another word.
    // PANEWELD_LOG_PRIVATE=1 shows values that are private otherwise.
    static Options optionsFromEnvironment(platform::LogLevel otherwise = platform::LogLevel::Error);

    StandardErrorLog()
        : StandardErrorLog(optionsFromEnvironment())
    {
    }
    explicit StandardErrorLog(Options options)
        : m_options(options)
    {
    }

    bool accepts(platform::LogLevel level) const override;
    bool showsPrivateValues() const override { return m_options.showsPrivateValues; }
    void write(platform::LogRecord const& record) override;

private:
    Options m_options;
    // So that no other thread of ours takes the place that this one has just found.
    platform::UnfairLock m_lock;
};

} // namespace backends
