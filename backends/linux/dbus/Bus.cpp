#include "backends/linux/dbus/Bus.h"

#include "backends/linux/loop/EventLoop.h"

#include <cstdlib>
#include <cstring>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace backends {

using platform::NSError;

namespace {

constexpr std::uint64_t answerTimeMicroseconds = 5'000'000;

std::optional<std::string> textIn(sd_bus_message* answer)
{
    char const* text = nullptr;
    if (sd_bus_message_is_method_error(answer, nullptr) || sd_bus_message_enter_container(answer, 'v', "s") < 0
        || sd_bus_message_read(answer, "s", &text) < 0)
        return std::nullopt;
    return text;
}

} // namespace

struct BusSlot::State {
    sd_bus_slot* slot = nullptr;
    std::function<void(sd_bus_message*)> handle {};
    ~State() { sd_bus_slot_unref(slot); }

    static int trampoline(sd_bus_message* message, void* context, sd_bus_error*) noexcept
    {
        // A copy: the handler may drop the slot that holds it.
        auto const handle = static_cast<State*>(context)->handle;
        handle(message);
        return 0;
    }
};

BusSlot::BusSlot(std::unique_ptr<State> state)
    : m_state(std::move(state))
{
}

BusSlot::BusSlot() = default;
BusSlot::~BusSlot() = default;
BusSlot::BusSlot(BusSlot&&) noexcept = default;
BusSlot& BusSlot::operator=(BusSlot&&) noexcept = default;

Bus::Bus(sd_bus* bus)
    : m_bus(bus)
{
}

Bus::~Bus()
{
    // Without a flush, which could wait for a bus that does not read.
    sd_bus_close(m_bus);
    sd_bus_unref(m_bus);
}

std::string Bus::systemAddress()
{
    char const* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address && *address ? address : "unix:path=/run/dbus/system_bus_socket";
}

platform::Result<std::unique_ptr<Bus>> Bus::connect(EventLoop& loop, std::string const& address)
{
    sd_bus* bus = nullptr;
    int result = sd_bus_new(&bus);
    if (result < 0)
        return NSError { "NSPOSIXErrorDomain", -result, std::strerror(-result) };
    std::unique_ptr<Bus> connection(new Bus(bus));
    result = sd_bus_set_address(bus, address.c_str());
    if (result >= 0)
        result = sd_bus_set_bus_client(bus, 1);
    if (result >= 0)
        result = sd_bus_start(bus);
    if (result >= 0)
        result = sd_bus_attach_event(bus, loop.native(), SD_EVENT_PRIORITY_NORMAL);
    if (result < 0)
        return NSError { "NSPOSIXErrorDomain", -result, std::strerror(-result) };
    loop.wakeUp();
    return connection;
}

BusSlot Bus::getText(Property const& property, std::function<void(std::optional<std::string>)> answered)
{
    sd_bus_message* question = nullptr;
    if (sd_bus_message_new_method_call(
            m_bus, &question, property.service.c_str(), property.path.c_str(), "org.freedesktop.DBus.Properties", "Get")
        < 0)
        return {};
    auto state = std::make_unique<BusSlot::State>();
    state->handle = [answered = std::move(answered)](sd_bus_message* answer) { answered(textIn(answer)); };
    sd_bus_message_append(question, "ss", property.interface.c_str(), property.name.c_str());
    sd_bus_call_async(m_bus, &state->slot, question, BusSlot::State::trampoline, state.get(), answerTimeMicroseconds);
    sd_bus_message_unref(question);
    return BusSlot(std::move(state));
}

BusSlot Bus::whenPropertiesChange(Property const& property, std::function<void()> changed)
{
    auto state = std::make_unique<BusSlot::State>();
    state->handle = [changed = std::move(changed)](sd_bus_message*) { changed(); };
    sd_bus_match_signal_async(m_bus, &state->slot, property.service.c_str(), property.path.c_str(),
        "org.freedesktop.DBus.Properties", "PropertiesChanged", BusSlot::State::trampoline, nullptr, state.get());
    return BusSlot(std::move(state));
}

} // namespace backends
