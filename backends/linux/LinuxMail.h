#pragma once

#include "backends/linux/dbus/MailPortal.h"
#include "backends/linux/host/ChildProgram.h"
#include "backends/linux/host/ScriptEngine.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/dispatch/Queue.h"
#include "platform/log/OSLog.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// What scripts may ask of the user's mail program: composeMail(recipients, subject, body, attachments) and
// openMail(address). The desktop's portal does it, and where there is none the opener that every desktop has. The
// functions run on the thread of the script; everything else is for the main thread.
class LinuxMail {
public:
    struct Options {
        std::string busAddress {};
        std::string appID {};
        // Openers of addresses, and of messages with attachments.
        std::string opener = "xdg-open";
        std::string composer = "xdg-email";
        // The window that has the keyboard, where the desktop's own dialog belongs. Asked on the script's thread.
        std::function<std::optional<std::uint32_t>()> parentWindow {};
        // How long an opener may take to fail. One that runs for longer is the mail program itself.
        std::chrono::milliseconds patience { 2000 };
    };

    LinuxMail(EventLoop& loop, platform::Queue& mainQueue, Options options, platform::OSLog log);
    ~LinuxMail();
    LinuxMail(LinuxMail const&) = delete;
    LinuxMail& operator=(LinuxMail const&) = delete;

    // They hold this object, so it outlives the engine that gets them.
    std::vector<ScriptFunction> functions();

private:
    using Clock = std::chrono::steady_clock;
    using Reply = platform::Result<platform::NSAppleEventDescriptor>;

    // On the script's thread.
    Reply compose(ScriptFunction::Arguments const& arguments, Clock::time_point deadline);
    Reply open(ScriptFunction::Arguments const& arguments, Clock::time_point deadline);
    Reply finish(MailPortal::Answer const& answer, std::vector<std::string> program, Clock::time_point deadline);

    std::optional<std::uint32_t> parentWindow() const;

    // On the main thread: leaves no zombie when it ends.
    void watch(UserProcess process);

    EventLoop& m_loop;
    platform::Queue& m_mainQueue;
    Options m_options;
    MailPortal m_portal;
    platform::OSLog m_log;
    // Mail programs that the opener itself has become.
    std::list<std::unique_ptr<ChildProgram>> m_running;
};

} // namespace backends
