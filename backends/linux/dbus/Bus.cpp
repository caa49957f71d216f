#include "backends/linux/dbus/Bus.h"

#include "backends/linux/loop/EventLoop.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace backends {

using platform::NSError;

namespace {

constexpr std::uint64_t answerTimeMicroseconds = 5'000'000;

// Freed when it has been sent, or could not be.
struct OwnedMessage {
    sd_bus_message* message = nullptr;
    ~OwnedMessage() { sd_bus_message_unref(message); }
};

bool makeCall(sd_bus* bus, OwnedMessage& owned, Bus::Member const& method, std::string const& signature,
    platform::List const& arguments)
{
    return sd_bus_message_new_method_call(bus, &owned.message, method.service.c_str(), method.path.c_str(),
               method.interface.c_str(), method.name.c_str())
        >= 0
        && appendArguments(owned.message, signature, arguments);
}

} // namespace

struct BusSlot::State {
    State(EventLoop& carrier, Bus::Handler handler)
        : loop(carrier)
        , handle(std::move(handler))
    {
    }
    ~State() { sd_bus_slot_unref(slot); }

    // The library hands out in the middle of its own work and does none of it again before it has returned. From the
    // loop the handler may run a nested one, which still hears the bus.
    void soon(std::function<void()> work)
    {
        deliveries.push_back(loop.soon([this, work = std::move(work)] {
            // Out of reach first: the work may drop the slot that holds all this.
            auto const delivery = std::move(deliveries.front());
            deliveries.pop_front();
            work();
        }));
    }

    void deliverSoon(BusMessage message)
    {
        soon([call = handle, message = std::move(message)] { call(message); });
    }

    static int trampoline(sd_bus_message* message, void* context, sd_bus_error*) noexcept
    {
        static_cast<State*>(context)->deliverSoon(readMessage(message));
        return 0;
    }

    // Of an object. A call is kept until it has been answered.
    static int callTrampoline(sd_bus_message* message, void* context, sd_bus_error*) noexcept
    {
        auto* const state = static_cast<State*>(context);
        std::shared_ptr<sd_bus_message> const call(sd_bus_message_ref(message), sd_bus_message_unref);
        state->soon([call, interface = state->exported, arguments = readMessage(message).arguments] {
            answerCall(call.get(), arguments, *interface);
        });
        return 1;
    }

    EventLoop& loop;
    Bus::Handler handle;
    std::shared_ptr<BusInterface const> exported {};
    sd_bus_slot* slot = nullptr;
    std::deque<LoopSource> deliveries {};
};

BusSlot::BusSlot(std::unique_ptr<State> state)
    : m_state(std::move(state))
{
}

BusSlot::BusSlot() = default;
BusSlot::~BusSlot() = default;
BusSlot::BusSlot(BusSlot&&) noexcept = default;
BusSlot& BusSlot::operator=(BusSlot&&) noexcept = default;

Bus::Bus(sd_bus* bus, EventLoop& loop)
    : m_bus(bus)
    , m_loop(loop)
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

std::string Bus::sessionAddress()
{
    if (auto const* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    auto const* const folder = std::getenv("XDG_RUNTIME_DIR");
    return folder && *folder ? std::string("unix:path=") + folder + "/bus" : std::string();
}

platform::Result<std::unique_ptr<Bus>> Bus::connect(EventLoop& loop, std::string const& address)
{
    sd_bus* bus = nullptr;
    int result = sd_bus_new(&bus);
    if (result < 0)
        return NSError { "NSPOSIXErrorDomain", -result, std::strerror(-result) };
    std::unique_ptr<Bus> connection(new Bus(bus, loop));
    result = sd_bus_set_address(bus, address.c_str());
    if (result >= 0)
        result = sd_bus_set_bus_client(bus, 1);
    if (result >= 0)
        result = sd_bus_set_connected_signal(bus, 1);
    if (result >= 0)
        result = sd_bus_start(bus);
    if (result >= 0)
        result = sd_bus_attach_event(bus, loop.native(), SD_EVENT_PRIORITY_NORMAL);
    if (result < 0)
        return NSError { "NSPOSIXErrorDomain", -result, std::strerror(-result) };
    loop.wakeUp();
    return connection;
}

void Bus::hurry()
{
    // Each part of the greeting is one; the rest may wait.
    constexpr int mostSteps = 4;
    int result = 1;
    for (int i = 0; i < mostSteps && result > 0; ++i)
        result = sd_bus_process(m_bus, nullptr);
    // Only the loop can end a connection so that everybody hears of it, and it looks at a socket that has news.
    if (result < 0)
        shutdown(sd_bus_get_fd(m_bus), SHUT_RDWR);
    m_loop.wakeUp();
}

BusSlot Bus::call(Member const& method, std::string const& signature, platform::List const& arguments, Handler answered)
{
    return call(method, signature, arguments, std::move(answered), true);
}

BusSlot Bus::callPresent(
    Member const& method, std::string const& signature, platform::List const& arguments, Handler answered)
{
    return call(method, signature, arguments, std::move(answered), false);
}

BusSlot Bus::call(Member const& method, std::string const& signature, platform::List const& arguments, Handler answered,
    bool startsService)
{
    OwnedMessage question;
    auto state = std::make_unique<BusSlot::State>(m_loop, std::move(answered));
    if (!makeCall(m_bus, question, method, signature, arguments)
        || sd_bus_message_set_auto_start(question.message, startsService) < 0
        || sd_bus_call_async(
               m_bus, &state->slot, question.message, BusSlot::State::trampoline, state.get(), answerTimeMicroseconds)
            < 0) {
        BusMessage refused;
        refused.error = "cannot call " + method.interface + "." + method.name;
        state->deliverSoon(refused);
    }
    return BusSlot(std::move(state));
}

void Bus::send(Member const& method, std::string const& signature, platform::List const& arguments)
{
    OwnedMessage message;
    if (!makeCall(m_bus, message, method, signature, arguments))
        return;
    sd_bus_message_set_expect_reply(message.message, 0);
    sd_bus_send(m_bus, message.message, nullptr);
}

BusSlot Bus::whenSignal(Member const& signal, Handler heard)
{
    auto state = std::make_unique<BusSlot::State>(m_loop, std::move(heard));
    sd_bus_match_signal_async(m_bus, &state->slot, signal.service.c_str(),
        signal.path.empty() ? nullptr : signal.path.c_str(), signal.interface.c_str(), signal.name.c_str(),
        BusSlot::State::trampoline, nullptr, state.get());
    return BusSlot(std::move(state));
}

BusSlot Bus::whenOwnerChanges(
    std::string const& service, std::function<void(std::string const& before, std::string const& after)> changed)
{
    auto state = std::make_unique<BusSlot::State>(m_loop, [changed = std::move(changed)](BusMessage const& message) {
        auto const before = message.argument(1), after = message.argument(2);
        if (before.asText() && after.asText())
            changed(*before.asText(), *after.asText());
    });
    auto const rule = "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                      "member='NameOwnerChanged',arg0='"
        + service + "'";
    sd_bus_add_match_async(m_bus, &state->slot, rule.c_str(), BusSlot::State::trampoline, nullptr, state.get());
    return BusSlot(std::move(state));
}

BusSlot Bus::askOwner(std::string const& service, std::function<void(std::string const& owner)> answered)
{
    return call({ "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner" }, "s",
        { service }, [answered = std::move(answered)](BusMessage const& answer) {
            // A refusal says that there is nobody.
            auto const owner = answer.argument(0);
            answered(owner.asText() ? *owner.asText() : std::string());
        });
}

BusSlot Bus::whenLocalSignal(std::string const& name, std::function<void()> heard)
{
    constexpr auto library = "org.freedesktop.DBus.Local";
    return whenSignal({ library, {}, library, name }, [heard = std::move(heard)](auto const&) { heard(); });
}

BusSlot Bus::whenReady(std::function<void()> ready) { return whenLocalSignal("Connected", std::move(ready)); }

BusSlot Bus::whenLost(std::function<void()> lost) { return whenLocalSignal("Disconnected", std::move(lost)); }

BusSlot Bus::exportObject(std::string const& path, BusInterface interface)
{
    auto state = std::make_unique<BusSlot::State>(m_loop, Handler {});
    state->exported = std::make_shared<BusInterface const>(std::move(interface));
    sd_bus_add_object(m_bus, &state->slot, path.c_str(), BusSlot::State::callTrampoline, state.get());
    return BusSlot(std::move(state));
}

void Bus::emit(Member const& signal, std::string const& signature, platform::List const& arguments)
{
    OwnedMessage message;
    if (sd_bus_message_new_signal(
            m_bus, &message.message, signal.path.c_str(), signal.interface.c_str(), signal.name.c_str())
            < 0
        || !appendArguments(message.message, signature, arguments))
        return;
    sd_bus_send(m_bus, message.message, nullptr);
    // What did not fit into the socket waits for a turn of the loop.
    m_loop.wakeUp();
}

BusSlot Bus::getProperty(Member const& property, Handler answered)
{
    return call({ property.service, property.path, "org.freedesktop.DBus.Properties", "Get" }, "ss",
        { property.interface, property.name }, std::move(answered));
}

BusSlot Bus::getText(Member const& property, std::function<void(std::optional<std::string>)> answered)
{
    return getProperty(property, [answered = std::move(answered)](BusMessage const& answer) {
        auto const value = answer.argument(0);
        answered(value.asText() ? std::optional(*value.asText()) : std::nullopt);
    });
}

BusSlot Bus::whenPropertiesChange(Member const& property, std::function<void()> changed)
{
    return whenSignal({ property.service, property.path, "org.freedesktop.DBus.Properties", "PropertiesChanged" },
        [changed = std::move(changed)](auto const&) { changed(); });
}

} // namespace backends
