#pragma once

#include "backends/linux/dbus/Portal.h"
#include "platform/foundation/URL.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

namespace backends {

// Opens addresses through the desktop's portal (org.freedesktop.portal.OpenURI), which may ask the user for the
// program. Main thread only.
class OpenURI {
public:
    enum class Outcome {
        Opened,
        Declined, // by the user, who was asked for a program
        Failed, // somebody else may try
    };
    using Done = std::function<void(Outcome, std::string const& reason)>;

    OpenURI(EventLoop& loop, std::string busAddress, std::string appID);
    ~OpenURI();

    // A file goes by a descriptor of it (O_PATH will do), which stays the caller's: -1 for other addresses. Tells once,
    // from the loop. False when there is no bus: nothing is told then.
    bool open(platform::URL const& url, int descriptor, std::optional<std::uint32_t> parentWindow, Done done);

private:
    struct Opening {
        Done done {};
        Portal::Request request {};
    };

    bool connect();
    void portalDidGo();
    void finish(std::list<Opening>::iterator opening, Portal::Response const& response);

    EventLoop& m_loop;
    std::string m_busAddress;
    std::string m_appID;
    // From the first address on.
    std::unique_ptr<Portal> m_portal;
    std::list<Opening> m_openings;
};

} // namespace backends
