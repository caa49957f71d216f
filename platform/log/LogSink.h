#pragma once

#include <string>

namespace platform {

enum class LogLevel { Debug = 0, Info = 1, Default = 2, Error = 3, Fault = 4 };

// One line, ready to be written. Private values are hidden in the message already unless the sink asked to see them.
struct LogRecord {
    LogLevel level = LogLevel::Default;
    std::string subsystem;
    std::string category;
    std::string message;
    // As the line was written, with the marks of its values: "opened %{public}s for %s".
    std::string format {};
    // A value of it is private, whether it is hidden in the message or not.
    bool hasPrivateValues = false;
};

// Where log lines go. Any thread.
class LogSink {
public:
    virtual ~LogSink() = default;

    virtual bool accepts(LogLevel level) const = 0;
    // Whether values that the format does not mark public may be shown.
    virtual bool showsPrivateValues() const { return false; }
    virtual void write(LogRecord const& record) = 0;
};

char const* nameOf(LogLevel level); // "debug", "info", "default", "error", "fault"

} // namespace platform
