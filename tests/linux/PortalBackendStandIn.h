#pragma once

#include "tests/linux/BusPeer.h"

#include <string>

namespace paneweld_tests {

// The desktop's half of a real portal, as far as shortcuts go: a desktop whose user says yes, and remembers what was
// bound. What it was asked reads "CreateSession app", "ListShortcuts", "BindShortcuts id".
class PortalBackendStandIn : public BusPeer {
public:
    static constexpr auto name = "org.freedesktop.impl.portal.desktop.standin";

    explicit PortalBackendStandIn(std::string busAddress);
    ~PortalBackendStandIn() override { stop(); }

    void press(bool isDown);

private:
    int handleCall(sd_bus_message* message) override;
    void answer(sd_bus_message* call, bool hasShortcut) const;

    std::string m_session;
    std::string m_shortcut;
};

} // namespace paneweld_tests
