#pragma once

#include "backends/linux/host/Journal.h"
#include "backends/linux/host/StandardErrorLog.h"

#include <optional>
#include <string>

namespace backends {

// The log where people look for it on this machine: the journal where there is one, and standard error where there is
// none or where somebody sits at it. Any thread.
class SystemLog : public platform::LogSink {
public:
    struct Options {
        std::string journalSocket = Journal::usualSocket;
        // What the journal is for: what was done, and not only what went wrong.
        std::optional<platform::LogLevel> journalLevel = platform::LogLevel::Info;
        StandardErrorLog::Options standardError {};
    };

    // PANEWELD_LOG gives both their level.
    static Options optionsFromEnvironment();

    SystemLog()
        : SystemLog(optionsFromEnvironment())
    {
    }
    explicit SystemLog(Options const& options);

    bool accepts(platform::LogLevel level) const override;
    bool showsPrivateValues() const override { return m_standardError.showsPrivateValues(); }
    void write(platform::LogRecord const& record) override;

private:
    Journal m_journal;
    StandardErrorLog m_standardError;
    std::optional<platform::LogLevel> const m_journalLevel;
    bool const m_hasJournal;
    bool const m_isTerminal;
};

} // namespace backends
