#pragma once

#include "platform/log/LogSink.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

// An argument of a log line. Text that the format does not mark "%{public}s" is private.
using LogArgument = std::variant<std::string, std::int64_t, std::uint64_t, double>;

// The text of one line: the conversions %s %d %lld %u %llu %f %@ and %%, each with "{public}" or "{private}" before its
// letters. Unmarked text is private, unmarked numbers are public; a private value reads "<private>" unless shown.
std::string logMessage(std::string_view format, std::initializer_list<LogArgument> arguments, bool showsPrivateValues);

// A channel of the log: who speaks (subsystem) and about what (category). Any thread.
class OSLog {
public:
    OSLog(LogSink& sink, std::string subsystem, std::string category)
        : m_sink(&sink)
        , m_subsystem(std::move(subsystem))
        , m_category(std::move(category))
    {
    }

    void debug(std::string_view format, std::initializer_list<LogArgument> arguments = {}) const
    {
        write(LogLevel::Debug, format, arguments);
    }
    void info(std::string_view format, std::initializer_list<LogArgument> arguments = {}) const
    {
        write(LogLevel::Info, format, arguments);
    }
    void error(std::string_view format, std::initializer_list<LogArgument> arguments = {}) const
    {
        write(LogLevel::Error, format, arguments);
    }

    std::string const& subsystem() const { return m_subsystem; }
    std::string const& category() const { return m_category; }

private:
    void write(LogLevel level, std::string_view format, std::initializer_list<LogArgument> arguments) const;

    LogSink* m_sink;
    std::string m_subsystem;
    std::string m_category;
};

} // namespace platform
