#pragma once

#include "backends/linux/dbus/Portal.h"
#include "backends/linux/host/MailMessage.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// The desktop's portal as far as mail goes: org.freedesktop.portal.Email, and OpenURI for a message that is there
// already. Every question blocks until it is answered, on a connection and a loop of its own, so it can be asked from a
// thread where nothing else runs, whatever the main thread is doing. Not on the main thread; else any.
class MailPortal {
public:
    MailPortal(std::string busAddress, std::string appID)
        : m_busAddress(std::move(busAddress))
        , m_appID(std::move(appID))
    {
    }

    enum class Ended {
        Done,
        Cancelled, // by the user
        OutOfTime, // and taken back
        Unable, // no bus, no portal, no mail program that it knows
    };
    struct Answer {
        Ended ended = Ended::Unable;
        // Why it is unable.
        std::string reason {};
    };

    // The attachments are open files, which stay the caller's. What the desktop itself asks the user, such as for the
    // program, it asks over the parent window.
    Answer compose(MailMessage const& message, std::vector<int> const& attachments,
        std::optional<std::uint32_t> parentWindow, std::chrono::steady_clock::time_point deadline) const;
    Answer open(std::string const& address, std::optional<std::uint32_t> parentWindow,
        std::chrono::steady_clock::time_point deadline) const;

private:
    struct Question;
    Answer ask(Question const& question, std::chrono::steady_clock::time_point deadline) const;

    std::string m_busAddress;
    std::string m_appID;
};

} // namespace backends
