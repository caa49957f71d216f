#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "platform/appkit/NSApplication.h"

#include <functional>

namespace backends {

// The process as its windows' owner, with or without an X server.
class LinuxApplication : public platform::NSApplication {
public:
    explicit LinuxApplication(EventLoop& loop)
        : m_loop(loop)
    {
    }

    void setActivateHandler(std::function<void()> handler) { m_activate = std::move(handler); }
    void setTerminateHandler(std::function<void()> handler) { m_terminate = std::move(handler); }

    void activateIgnoringOtherApps(bool ignoringOtherApps) override;
    // The host's handler. Without one all windows are asked to close, and the process exits when they are gone, or
    // after two seconds with those that refused.
    void terminate() override;

private:
    void exitWhenClosed();

    EventLoop& m_loop;
    std::function<void()> m_activate;
    std::function<void()> m_terminate;
    LoopSource m_terminateTimer;
    LoopSource m_terminateDeadline;
};

} // namespace backends
