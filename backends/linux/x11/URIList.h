#pragma once

#include "platform/foundation/URL.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The ways in which programs write addresses that they hand to others, by a drag or a copy.
namespace backends {

// A text/uri-list (RFC 2483, section 5): an address a line, "#" before a comment, in the order of the list. Lines may
// end in any of CR, LF and NUL. What is no address is left out. Escapes stay as they are written, and bytes that are no
// UTF-8 become escapes, for a file's name may have them. An absolute path without a scheme is taken literally; files of
// this machine lose its name (RFC 8089, appendix B): "localhost" or ownHost.
std::vector<platform::URL> urlsFromURIList(std::string_view bytes, std::string_view ownHost = {});

// A text/x-moz-url: an address and its title by turns, a line each, in UTF-16 of either byte order or in bytes. Absent
// when it is UTF-16 that is cut off or broken.
std::optional<std::vector<platform::URL>> urlsFromMozURL(std::string_view bytes, std::string_view ownHost = {});

// A _NETSCAPE_URL: the same in bytes.
std::vector<platform::URL> urlsFromNetscapeURL(std::string_view bytes, std::string_view ownHost = {});

} // namespace backends
