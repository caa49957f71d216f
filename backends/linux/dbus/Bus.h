#pragma once

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

// A connection to a message bus, carried by the loop. Nothing here waits: a bus that is dead or silent costs nothing
// but the answer. Main thread only.
class Bus {
public:
    // The address as in the D-Bus specification, "unix:path=/run/dbus/system_bus_socket". Fails when nobody listens.
    static platform::Result<std::unique_ptr<Bus>> connect(EventLoop& loop, std::string const& address);
    // Where the machine's own bus is.
    static std::string systemAddress();
    ~Bus();
    Bus(Bus const&) = delete;
    Bus& operator=(Bus const&) = delete;

    struct Property {
        std::string service;
        std::string path;
        std::string interface;
        std::string name;
    };

    // The answer is absent when the property is no text, or nobody answered in time.
    BusSlot getText(Property const& property, std::function<void(std::optional<std::string>)> answered);
    // Each time that properties of the interface changed.
    BusSlot whenPropertiesChange(Property const& property, std::function<void()> changed);

private:
    explicit Bus(sd_bus* bus);

    sd_bus* m_bus;
};

} // namespace backends
