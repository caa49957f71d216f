#pragma once

#include "backends/linux/host/Descriptor.h"

#include <cstddef>
#include <string>

namespace backends {

// What a program writes into one of its streams, as far as it has come and up to a limit. Reading never waits.
class OutputPipe {
public:
    explicit OutputPipe(std::size_t mostBytes)
        : m_mostBytes(mostBytes)
    {
    }

    // Before the program starts. False with errno.
    bool open();
    // The program's end. Ours is closed when the program has it.
    int writingEnd() const { return m_writing.number(); }
    void closeWritingEnd() { m_writing.reset(); }
    // Readable when there is more; -1 when it is closed.
    int readingEnd() const { return m_reading.number(); }
    // All that is there now. False when nothing more is to come, or too much came: whoever watches it ends that, and
    // closes it, so that a program which goes on writing is not held up for ever.
    bool read();
    void closeReadingEnd() { m_reading.reset(); }

    bool hasOverflown() const { return m_text.size() > m_mostBytes; }
    std::string const& text() const { return m_text; }

private:
    std::size_t m_mostBytes;
    Descriptor m_reading;
    Descriptor m_writing;
    std::string m_text;
};

} // namespace backends
