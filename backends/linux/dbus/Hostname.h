#pragma once

#include "backends/linux/dbus/Bus.h"

#include <memory>
#include <optional>
#include <string>

namespace backends {

class EventLoop;

// The machine's pretty name as the system's own service knows it (org.freedesktop.hostname1): asked once, kept up to
// date, and absent until it has answered.
class Hostname {
public:
    Hostname(EventLoop& loop, std::string const& busAddress);

    std::optional<std::string> const& prettyName() const { return m_prettyName; }

private:
    void ask();

    std::unique_ptr<Bus> m_bus;
    std::optional<std::string> m_prettyName;
    BusSlot m_question;
    BusSlot m_changes;
};

} // namespace backends
