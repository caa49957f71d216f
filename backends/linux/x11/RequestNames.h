#pragma once

#include "platform/log/OSLog.h"

#include <cstdint>
#include <string>
#include <xcb/xcb.h>

namespace backends {

// X protocol numbers as words for the log.
std::string nameOfRequest(std::uint8_t majorOpcode, std::uint16_t minorOpcode);
std::string nameOfError(std::uint8_t errorCode);
char const* nameOfConnectionError(int code);

// One line with the request's name and the cause. A window that dies while a request for it is on the way is no
// mistake of anybody, so that is only for debugging.
void logXError(platform::OSLog const& log, xcb_generic_error_t const& error);

} // namespace backends
