#include "backends/linux/dbus/Hostname.h"

namespace backends {

namespace {

Bus::Member prettyHostname()
{
    return { "org.freedesktop.hostname1", "/org/freedesktop/hostname1", "org.freedesktop.hostname1", "PrettyHostname" };
}

} // namespace

Hostname::Hostname(EventLoop& loop, std::string const& busAddress)
{
    auto bus = Bus::connect(loop, busAddress);
    if (!bus)
        return;
    m_bus = bus.take();
    m_changes = m_bus->whenPropertiesChange(prettyHostname(), [this] { ask(); });
    ask();
}

void Hostname::ask()
{
    m_question = m_bus->getText(prettyHostname(), [this](auto name) {
        m_prettyName = std::move(name);
        // Most machines have none, and the service says so with an empty text.
        if (m_prettyName && m_prettyName->empty())
            m_prettyName.reset();
    });
}

} // namespace backends
