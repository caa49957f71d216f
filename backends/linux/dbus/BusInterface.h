#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

#include <functional>
#include <string>
#include <vector>

struct sd_bus_message;

namespace backends {

// What an object of ours on the bus can be asked, written down once: calls, properties and introspection all come from
// this table. A value; types and signatures are those of the D-Bus specification.
struct BusInterface {
    using Answer = std::function<platform::Result<platform::List>(platform::List const& arguments)>;
    struct Method {
        std::string name;
        std::string takes;
        std::string gives;
        // Called only with arguments of the types above. The domain of an error is the error's name on the bus. Empty:
        // the answer has nothing in it.
        Answer answer {};
        // What the call is for, where that may take its time or end the object: done after a good answer has gone out.
        std::function<void(platform::List const& arguments)> then {};
    };
    struct Property {
        std::string name;
        std::string type;
        std::function<platform::Value()> get;
    };
    struct Signal {
        std::string name;
        std::string type;
    };

    std::string name;
    std::vector<Method> methods {};
    std::vector<Property> properties {};
    std::vector<Signal> signals {};
    // Somebody called one of the methods, and was refused: for the log.
    std::function<void(std::string const& method, platform::NSError const&)> didRefuse {};
};

// An error whose name is the bus's own for arguments that make no sense.
platform::NSError invalidArguments(std::string what);

// Answers a call to the object at a path that has this interface and no other. What the arguments are has been read.
void answerCall(sd_bus_message* call, platform::List const& arguments, BusInterface const& interface);

// The object as org.freedesktop.DBus.Introspectable tells it.
std::string introspectionOf(BusInterface const& interface);

} // namespace backends
