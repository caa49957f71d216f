#include "backends/linux/LinuxApplication.h"

#include "platform/appkit/NSWindow.h"

#include <cstdlib>

namespace backends {

namespace {

constexpr platform::Seconds closingTime { 2 };
// How often it is looked whether all windows have gone; only while the process is ending.
constexpr platform::Seconds closingCheck { 0.02 };

} // namespace

void LinuxApplication::activateIgnoringOtherApps(bool)
{
    if (m_activate)
        m_activate();
}

void LinuxApplication::terminate()
{
    if (m_terminate) {
        // A copy: the handler may set another.
        auto const handler = m_terminate;
        handler();
        return;
    }
    // Asked twice, it is on its way already.
    if (m_terminateDeadline)
        return;
    for (auto const& window : windows())
        window->close();
    m_terminateDeadline = m_loop.after(closingTime, [] { std::exit(EXIT_SUCCESS); });
    exitWhenClosed();
}

void LinuxApplication::exitWhenClosed()
{
    // From the loop and never inside the call, so that whoever asked has returned.
    m_terminateTimer = m_loop.after(closingCheck, [this] {
        if (windows().empty())
            std::exit(EXIT_SUCCESS);
        exitWhenClosed();
    });
}

} // namespace backends
