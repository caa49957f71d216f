#pragma once

#include <optional>
#include <string>

namespace backends {

// What an address of a message bus says, as in the D-Bus specification: entries that are tried in their order, each a
// transport and its keys.

// The socket's place in the file system, of the first entry that has one.
std::optional<std::string> socketPath(std::string const& address);

// The same address for whatever bus is there: one that starts again has another identity.
std::string withoutIdentity(std::string const& address);

} // namespace backends
