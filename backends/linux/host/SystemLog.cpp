#include "backends/linux/host/SystemLog.h"

#include <unistd.h>

namespace backends {

SystemLog::Options SystemLog::optionsFromEnvironment()
{
    Options options;
    options.standardError = StandardErrorLog::optionsFromEnvironment();
    options.journalLevel = StandardErrorLog::optionsFromEnvironment(*options.journalLevel).level;
    return options;
}

SystemLog::SystemLog(Options const& options)
    : m_journal(options.journalSocket)
    , m_standardError(options.standardError)
    , m_journalLevel(options.journalLevel)
    , m_hasJournal(m_journal.isThere())
    , m_isTerminal(isatty(options.standardError.descriptor) == 1)
{
}

bool SystemLog::accepts(platform::LogLevel level) const
{
    return m_standardError.accepts(level) || (m_hasJournal && m_journalLevel && level >= *m_journalLevel);
}

void SystemLog::write(platform::LogRecord const& record)
{
    bool const isForJournal = m_hasJournal && m_journalLevel && record.level >= *m_journalLevel;
    bool const isTaken = isForJournal && m_journal.write(record);
    if (!isTaken || m_isTerminal)
        m_standardError.write(record);
}

} // namespace backends
