#pragma once

#include <optional>
#include <string>

namespace platform {

// What the machine says of itself. Each question is asked anew; nothing blocks on a service that does not answer.
class HostInfo {
public:
    virtual ~HostInfo() = default;

    // The name a person gave the machine ("Ada's Laptop"), else its plain host name. Absent when it has none.
    virtual std::optional<std::string> localizedName() const = 0;
    // The maker's model name ("ThinkPad X1 Carbon Gen 9"). Absent when the firmware does not say.
    virtual std::optional<std::string> machineModel() const = 0;
    // The operating system and its version, for people ("Debian GNU/Linux 12 (bookworm)").
    virtual std::string operatingSystemVersionString() const = 0;
};

} // namespace platform
