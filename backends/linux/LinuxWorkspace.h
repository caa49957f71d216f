#pragma once

#include "backends/linux/dbus/OpenURI.h"
#include "backends/linux/host/OpenerPrograms.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

namespace backends {

// Opens addresses with the program that the user chose for them: through the desktop's portal, else through an opener
// of the desktop.
class LinuxWorkspace : public platform::NSWorkspace {
public:
    struct Options {
        std::string busAddress {};
        std::string appID {};
        // The window that has the keyboard, where the desktop's own dialog belongs.
        std::function<std::optional<std::uint32_t>()> parentWindow {};
    };
    LinuxWorkspace(EventLoop& loop, Options options, platform::OSLog log);

    // False for a file that is not there. What fails later goes to the log and to the handler.
    bool openURL(platform::URL const& url) override;

private:
    void openWithProgram(platform::URL const& url, std::string const& portalReason);
    void finish(platform::URL const& url, std::optional<platform::NSError> const& error);

    EventLoop& m_loop;
    Options m_options;
    platform::OSLog m_log;
    OpenURI m_portal;
    OpenerPrograms m_programs;
    // What is to be told after the call.
    std::list<LoopSource> m_later;
};

} // namespace backends
