#pragma once

#include "platform/foundation/HostInfo.h"

#include <functional>
#include <optional>
#include <string>

namespace backends {

// What this machine says of itself in its files, read anew at each question.
class MachineInfo : public platform::HostInfo {
public:
    // The root is "" but in tests. prettyName is a better source of the name than files, when it has one.
    explicit MachineInfo(std::string root = {}, std::function<std::optional<std::string>()> prettyName = {});

    std::optional<std::string> localizedName() const override;
    std::optional<std::string> machineModel() const override;
    std::string operatingSystemVersionString() const override;

private:
    std::optional<std::string> read(std::string const& path) const;
    std::optional<std::string> assignment(std::string const& path, std::string const& name) const;

    std::string m_root;
    std::function<std::optional<std::string>()> m_prettyName;
};

// The value of NAME=value in a file of assignments, unquoted as a shell would (os-release(5)). Absent or empty: none.
std::optional<std::string> assignedValue(std::string const& text, std::string const& name);

} // namespace backends
