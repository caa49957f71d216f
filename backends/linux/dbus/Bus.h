#pragma once

#include "backends/linux/dbus/BusInterface.h"
#include "backends/linux/dbus/BusMessage.h"
#include "platform/foundation/Result.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sd_bus;
struct sd_bus_slot;

namespace backends {

class EventLoop;

// A call under way or a rule that is listened to. Dropping it ends both.
class [[nodiscard]] BusSlot {
public:
    BusSlot();
    ~BusSlot();
    BusSlot(BusSlot&&) noexcept;
    BusSlot& operator=(BusSlot&&) noexcept;

private:
    friend class Bus;
    struct State;
    explicit BusSlot(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};

// A connection to a message bus, carried by the loop, whose handlers run like all others of the loop. Nothing here
// waits: a bus that is dead or silent costs nothing but the answer. For the thread of the loop only.
class Bus {
public:
    // The address as in the D-Bus specification, "unix:path=/run/dbus/system_bus_socket". Fails when nobody listens.
    static platform::Result<std::unique_ptr<Bus>> connect(EventLoop& loop, std::string const& address);
    // Reads and writes what is possible at once; otherwise the loop does it in its turn.
    void hurry();
    // Where the machine's own bus is, and that of the user's session; the latter is empty without one.
    static std::string systemAddress();
    static std::string sessionAddress();
    ~Bus();
    Bus(Bus const&) = delete;
    Bus& operator=(Bus const&) = delete;

    struct Member {
        std::string service;
        // Empty, where signals are listened to: any object of the service.
        std::string path;
        std::string interface;
        std::string name;
    };
    using Handler = std::function<void(BusMessage const&)>;

    // The answer is an error when nobody answered in time, or the arguments do not fit the signature.
    BusSlot call(Member const& method, std::string const& signature, platform::List const& arguments, Handler answered);
    // The same, but the bus starts no service for it.
    BusSlot callPresent(
        Member const& method, std::string const& signature, platform::List const& arguments, Handler answered);
    // Without caring for an answer.
    void send(Member const& method, std::string const& signature, platform::List const& arguments);
    // What the owner of the service sends. Somebody else who addresses it to us alone gets through as well: who has to
    // be sure compares the sender.
    BusSlot whenSignal(Member const& signal, Handler heard);
    // Each time that the name changes hands; the names of connections, empty for nobody.
    BusSlot whenOwnerChanges(
        std::string const& service, std::function<void(std::string const& before, std::string const& after)> changed);
    // An object of our own, with one interface: calls are answered from the loop, in their order.
    BusSlot exportObject(std::string const& path, BusInterface interface);
    // A signal of such an object, to everybody; the service is left empty.
    void emit(Member const& signal, std::string const& signature, platform::List const& arguments);

    // Who has it now: the name of a connection, or empty. Answered before any change that is told later.
    BusSlot askOwner(std::string const& service, std::function<void(std::string const& owner)> answered);
    // Once, when the bus has answered for the first time. A socket that takes connections need not be a bus.
    BusSlot whenReady(std::function<void()> ready);
    // Once, when the bus has gone.
    BusSlot whenLost(std::function<void()> lost);

    // The value is the one argument of the answer.
    BusSlot getProperty(Member const& property, Handler answered);
    // The answer is absent when the property is no text, or nobody answered in time.
    BusSlot getText(Member const& property, std::function<void(std::optional<std::string>)> answered);
    // Each time that properties of the interface changed.
    BusSlot whenPropertiesChange(Member const& property, std::function<void()> changed);

private:
    Bus(sd_bus* bus, EventLoop& loop);

    BusSlot call(Member const& method, std::string const& signature, platform::List const& arguments, Handler answered,
        bool startsService);
    // News of the connection itself.
    BusSlot whenLocalSignal(std::string const& name, std::function<void()> heard);

    sd_bus* m_bus;
    EventLoop& m_loop;
};

} // namespace backends
