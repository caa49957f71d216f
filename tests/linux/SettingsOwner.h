#pragma once

#include "backends/linux/x11/XSettings.h"
#include "tests/linux/Client.h"

#include <string>

namespace paneweld_tests {

// The program that tells a desktop's settings to everybody (XSETTINGS), here with a connection of its own. It takes its
// place when it is made, from whoever had it, and leaves it like a program that dies.
class SettingsOwner : public Client {
public:
    explicit SettingsOwner(std::string const& display);

    void tell(backends::Settings const& settings);
    // It goes on without its place.
    void resign();

private:
    xcb_window_t m_window;
    std::uint32_t m_serial = 0;
};

} // namespace paneweld_tests
