#pragma once

#include "tests/linux/Client.h"

#include <cstddef>
#include <deque>
#include <string>

namespace paneweld_tests {

// A window manager that is asked to do something and does it when the test says so, one thing after another.
class SlowManager : public Client {
public:
    explicit SlowManager(std::string const& display);

    // How many requests wait.
    std::size_t look();
    void answer();

private:
    std::deque<xcb_configure_request_event_t> m_requests;
};

} // namespace paneweld_tests
