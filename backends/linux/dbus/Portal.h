#pragma once

#include "backends/linux/dbus/Bus.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace backends {

class EventLoop;

// The desktop's portal on the session bus (org.freedesktop.portal.Desktop): what an app may ask the desktop for,
// sandboxed or not. Most questions are answered by the user, who may take their time. For the thread of the loop only.
class Portal {
public:
    // Fails when there is no bus. Whether there is a portal shows with the first question. The app's identifier may be
    // empty.
    static platform::Result<std::unique_ptr<Portal>> connect(
        EventLoop& loop, std::string const& busAddress, std::string const& appID);
    ~Portal();
    Portal(Portal const&) = delete;
    Portal& operator=(Portal const&) = delete;

    // The bus has gone, and this with it.
    bool isLost() const { return m_isLost; }
    // The portal went, with all that was asked of it, or came.
    void setObserver(std::function<void()> didGo, std::function<void()> didCome);

    // How a question ended: the codes of org.freedesktop.portal.Request, and one of ours.
    enum class Ended { Success = 0, Cancelled = 1, Otherwise = 2, Failed };
    struct Response {
        Ended ended = Ended::Failed;
        platform::Dictionary results {};
        // Why it failed.
        std::string error {};
    };
    // A question under way. Dropping it takes the question back.
    class [[nodiscard]] Request {
    public:
        Request() = default;
        ~Request() { end(); }
        Request(Request&& other) noexcept;
        Request& operator=(Request&& other) noexcept;
        explicit operator bool() const { return m_portal != nullptr; }
        void end();

    private:
        friend class Portal;
        Portal* m_portal = nullptr;
        std::string m_token {};
    };

    // Methods whose last argument is a dictionary of options, and which answer with a request. The interface is named
    // by its last part, "GlobalShortcuts"; the signature is that of the arguments before the options.
    Request ask(std::string const& interface, std::string const& method, std::string const& signature,
        platform::List arguments, platform::Dictionary options, std::function<void(Response const&)> answered);

    // The version of an interface, absent when the portal has it not, with the reason.
    BusSlot askVersion(
        std::string const& interface, std::function<void(platform::Result<std::uint32_t> const&)> answered);
    // Signals of an interface, as above.
    BusSlot whenSignal(std::string const& interface, std::string const& signal, Bus::Handler heard);
    // Signals and methods of an object that the portal has made.
    BusSlot whenObjectSignals(std::string const& interface, std::string const& signal, Bus::Handler heard);
    void closeObject(std::string const& interface, std::string const& path);

    static std::string makeToken();

private:
    Portal(std::unique_ptr<Bus> bus, std::string appID);

    struct Pending {
        std::function<void(Response const&)> answered {};
        BusSlot call {};
        // As the portal named it, when it has.
        std::string path {};
    };

    void registerApp();
    void ownerDidChange(std::string const& before, std::string const& after);
    // Signals that claim to be the portal's and are.
    Bus::Handler fromOwner(Bus::Handler heard);
    void handleResponse(BusMessage const& response);
    void finish(std::string const& token, Response const& response);
    void takeBack(std::string const& token);

    std::unique_ptr<Bus> m_bus;
    std::string m_appID;
    // The portal's connection. Empty while there is none.
    std::string m_owner;
    bool m_isRegistering = false;
    bool m_isLost = false;
    std::map<std::string, Pending> m_pending;
    std::function<void()> m_didGo;
    std::function<void()> m_didCome;
    BusSlot m_responses;
    BusSlot m_ownerQuestion;
    BusSlot m_ownerChanges;
    BusSlot m_lost;
    BusSlot m_registration;
};

// A window of X as the portal names it, where a dialog of the desktop belongs to one; empty for none.
std::string portalWindowHandle(std::optional<std::uint32_t> xid);

} // namespace backends
