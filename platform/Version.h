#pragma once

namespace platform {

// The version of the library that is loaded, "major.minor.patch". A plug-in built for another one is refused.
char const* libraryVersion();

} // namespace platform
