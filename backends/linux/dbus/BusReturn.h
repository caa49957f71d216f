#pragma once

#include "backends/linux/loop/EventLoop.h"

#include <functional>
#include <string>

namespace backends {

// The return of a message bus that has gone, or was not there yet: says when another attempt to connect may help. It
// hears of a socket that appears at the bus's place; for the rest it goes by a few ever longer waits, and then nothing
// wakes up any more. Main thread only.
class BusReturn {
public:
    // tryAgain is called from the loop, and may drop this.
    BusReturn(EventLoop& loop, std::string const& address, std::function<void()> tryAgain);
    ~BusReturn();
    BusReturn(BusReturn const&) = delete;
    BusReturn& operator=(BusReturn const&) = delete;

    // The bus cannot be reached. Also after an attempt that failed.
    void await();
    // It is there, and has answered.
    void found();

private:
    void watchFolder();
    void endWatching();
    void folderDidChange();
    void tryAfter(platform::Seconds delay);

    EventLoop& m_loop;
    // Empty for a bus that is somewhere else.
    std::string m_folder;
    std::string m_name;
    bool m_hasAddress;
    std::function<void()> m_tryAgain;
    int m_attempts = 0;
    // Of inotify, or -1.
    int m_descriptor = -1;
    LoopSource m_folderChanges;
    LoopSource m_attempt;
};

} // namespace backends
