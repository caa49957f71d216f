#pragma once

#include "platform/runtime/Class.h"

#include <optional>
#include <string>

namespace platform {
class Platform;
}

namespace paneweld {

// Tells a host the name that people know this machine by. It keeps nothing, and is asked as a class.
class HostNameProvider : public platform::NSObject {
public:
    // Asked of the machine at each call. Absent when it has no name.
    static std::optional<std::string> localizedName(platform::Platform& platform);

    // "PaneweldHostNameProvider" with its selector; the maker is added where it is exported.
    static platform::Class runtimeClass(platform::Platform& (*platform)());
};

} // namespace paneweld
