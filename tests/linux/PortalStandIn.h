#pragma once

#include "tests/linux/BusPeer.h"

#include <cstdint>
#include <functional>
#include <string>

namespace paneweld_tests {

// What sendPress does for the portal, from somebody who is not the portal.
void forgePress(
    std::string const& busAddress, std::string const& victim, std::string const& session, std::string const& shortcut);

// A desktop's portal of our own on a test's bus, as far as shortcuts go, with a user who answers as the test says. It
// lives on a thread of its own. What it was asked reads: "Register app.test", "version",
// "CreateSession", "ListShortcuts", "BindShortcuts id trigger", "Close session", "Close request".
class PortalStandIn : public BusPeer {
public:
    struct Manners {
        // Absent methods, as of a portal that is too old.
        bool hasShortcuts = true;
        // The codes of the responses: 0 yes, 1 the user declined, 2 otherwise.
        std::uint32_t sessionCode = 0;
        std::uint32_t bindCode = 0;
        // What the user must press, in the desktop's words. Empty: nothing was bound, whatever the code.
        std::string trigger = "Ctrl+Alt+N";
        // Remembered from earlier: listed at once.
        bool knowsShortcut = false;
        // The user takes their time for ever.
        bool neverAnswersBind = false;
        // A session that is no object path.
        bool isMalformed = false;
    };

    // Returns when it has its name on the bus.
    PortalStandIn(std::string busAddress, Manners manners);
    explicit PortalStandIn(std::string busAddress)
        : PortalStandIn(std::move(busAddress), Manners {})
    {
    }
    ~PortalStandIn() override { stop(); }

    // Who asked last, by the name of the connection.
    std::string client() const;
    // The session that was made last, and the shortcut that was bound last.
    std::string session() const;
    std::string shortcut() const;

    // The user presses the shortcut of the session and lets it go; or that of another one.
    void press(bool isDown, std::uint64_t time = 1) { sendPress(isDown, session(), shortcut(), time); }
    void sendPress(bool isDown, std::string const& session, std::string const& shortcut, std::uint64_t time = 1);
    // The user gives it other keys, or none.
    void changeTrigger(std::string const& trigger);
    void closeSession();

private:
    int handleCall(sd_bus_message* message) override;
    void respond(sd_bus_message* call, std::uint32_t code, std::function<void(sd_bus_message*)> const& results);
    void appendShortcuts(sd_bus_message* message, bool hasShortcut);

    Manners m_manners;
    std::string m_client;
    std::string m_session;
    std::string m_shortcut;
    int m_sessionCount = 0;
};

} // namespace paneweld_tests
