#include "tests/linux/PortalBackendStandIn.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/ShortcutSessionFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>

namespace paneweld_tests {

using platform::cmdKey;
using platform::HotKeyAvailability;
using platform::HotKeyResult;

namespace {

constexpr std::uint32_t n = 45;

// The portal that desktops ship, with a desktop of our own behind it.
class RealPortal : public ShortcutSession {
protected:
    RealPortal()
    {
        m_home.write("portals/standin.portal",
            std::string("[portal]\nDBusName=") + PortalBackendStandIn::name
                + "\nInterfaces=org.freedesktop.impl.portal.GlobalShortcuts\nUseIn=standin\n");
        for (auto const* name : { "HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME" })
            setenv(name, m_home.path().c_str(), 1);
        setenv("XDG_DESKTOP_PORTAL_DIR", (m_home.path() + "/portals").c_str(), 1);
        setenv("XDG_CURRENT_DESKTOP", "standin", 1);
        m_bus = std::make_unique<SessionBus>();
        desktopSide = std::make_unique<PortalBackendStandIn>(m_bus->address());
        startPortal();
    }

    void startPortal() { m_portal = ChildProcess({ "/usr/libexec/xdg-desktop-portal", "--replace" }); }
    void endPortal() { m_portal.end(SIGKILL); }

    std::unique_ptr<PortalBackendStandIn> desktopSide;

private:
    platform::TemporaryFolder m_home;
    std::unique_ptr<SessionBus> m_bus;
    ChildProcess m_portal;
};

} // namespace

TEST_F(RealPortal, BindsPressesAndBindsAgainAfterARestart)
{
    openWayland();
    auto const key = registered(n, cmdKey);
    waitFor(HotKeyAvailability::PortalBound);
    EXPECT_EQ(truth().trigger, "Press Super+N");
    EXPECT_EQ(desktopSide->count("BindShortcuts hotkey-45-256"), 1);
    desktopSide->press(true);
    pumpUntil([&] { return heard.size() == 1; });
    desktopSide->press(false);
    pumpUntil([&] { return heard.size() == 2; });
    EXPECT_EQ(heard, once(1));

    endPortal();
    waitFor(HotKeyAvailability::XWaylandFocusedOnly);
    startPortal();
    waitFor(HotKeyAvailability::PortalBound);
    // The desktop remembers it.
    EXPECT_EQ(desktopSide->count("BindShortcuts"), 1);
}

} // namespace paneweld_tests
