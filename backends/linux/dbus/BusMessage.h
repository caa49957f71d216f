#pragma once

#include "platform/foundation/Value.h"

#include <string>
#include <string_view>

struct sd_bus_message;

namespace backends {

// What came from the bus: a signal, or the answer to a call. A value.
struct BusMessage {
    // The object that a signal is about, and the connection that sent it (":1.7").
    std::string path {};
    std::string sender {};
    // Of an answer that is an error, as in "org.freedesktop.DBus.Error.ServiceUnknown: no such name". Else empty.
    std::string error {};
    // Structures and arrays are lists, dictionaries with text keys are dictionaries, variants are what they hold.
    platform::List arguments {};

    bool isError() const { return !error.empty(); }
    // Null where the message is shorter.
    platform::Value argument(std::size_t index) const;
};

// The first complete type of a signature of the D-Bus specification: a letter, an array with its type, or what a
// bracket closes. Empty when there is none.
std::string_view firstCompleteType(std::string_view signature);

BusMessage readMessage(sd_bus_message* message);

// Appends arguments as the signature of the D-Bus specification says. A variant takes the type of its value: text, a
// boolean, a number of 32 bits, a list of texts or of such lists; any other type is given by a BusVariant. Data is an
// array of bytes, and a descriptor its number. False when a value does not fit.
bool appendArguments(sd_bus_message* message, std::string const& signature, platform::List const& arguments);

} // namespace backends
