#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/log/OSLog.h"

#include <list>
#include <string>
#include <vector>

namespace backends {

// Opens addresses with the program that the user chose for them, through the desktop's own opener.
class Workspace : public platform::NSWorkspace {
public:
    Workspace(EventLoop& loop, platform::OSLog log, std::string opener = "xdg-open");
    ~Workspace() override;

    // False when the opener could not be started. What it says later, when it fails, goes to the log.
    bool openURL(platform::URL const& url) override;

private:
    // An opener at work. It is waited for, so that it leaves no zombie, and by its own descriptor, because the signal
    // of children that end is the host's.
    struct Child {
        int process = -1;
        int descriptor = -1;
        LoopSource source {};
    };

    void childDidEnd(std::list<Child>::iterator child);

    EventLoop& m_loop;
    platform::OSLog m_log;
    std::string m_opener;
    std::list<Child> m_children;
};

// The environment that the user's programs expect. A bundle that carries its own libraries ("APPDIR") keeps the
// user's values beside its own, under the names with "_ORIG".
std::vector<std::string> environmentOfUser(char const* const* environment);

} // namespace backends
