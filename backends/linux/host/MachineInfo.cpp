#include "backends/linux/host/MachineInfo.h"

#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>

namespace backends {

namespace {

std::string_view trimmed(std::string_view text)
{
    // Firmware ends its texts with a line break, a device tree with a zero.
    return platform::trimmed(text, std::string_view(" \t\r\n\0", 5));
}

// What makers leave in their firmware instead of a name, in lower case.
constexpr std::string_view placeholders[] = { "to be filled by o.e.m.", "to be filled by oem", "default string",
    "system product name", "system version", "system manufacturer", "product name", "not applicable", "not specified",
    "not available", "none", "n/a", "na", "unknown", "invalid", "oem", "o.e.m.", "x.x", "0", "1.0", "0123456789" };

bool isPlaceholder(std::string_view text)
{
    auto const lower = platform::asciiLowerCase(text);
    return lower.empty()
        || std::find(std::begin(placeholders), std::end(placeholders), lower) != std::end(placeholders);
}

std::string unquoted(std::string_view value)
{
    value = trimmed(value);
    bool const isSingle = value.size() >= 2 && value.front() == '\'' && value.back() == '\'';
    if (isSingle)
        return std::string(value.substr(1, value.size() - 2));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size())
            ++i;
        text += value[i];
    }
    return text;
}

} // namespace

std::optional<std::string> assignedValue(std::string const& text, std::string const& name)
{
    std::optional<std::string> found;
    // The last one counts, as in a shell.
    for (auto const line : platform::split(text, '\n')) {
        auto const assignment = trimmed(line);
        if (assignment.starts_with(name) && assignment.substr(name.size()).starts_with('='))
            found = unquoted(assignment.substr(name.size() + 1));
    }
    if (found && found->empty())
        return std::nullopt;
    return found;
}

MachineInfo::MachineInfo(std::string root, std::function<std::optional<std::string>()> prettyName)
    : m_root(std::move(root))
    , m_prettyName(std::move(prettyName))
{
}

std::optional<std::string> MachineInfo::read(std::string const& path) const
{
    auto const text = readFile(m_root + path);
    return text ? std::optional(text.value()) : std::nullopt;
}

std::optional<std::string> MachineInfo::assignment(std::string const& path, std::string const& name) const
{
    auto const text = read(path);
    return text ? assignedValue(*text, name) : std::nullopt;
}

std::optional<std::string> MachineInfo::localizedName() const
{
    if (m_prettyName) {
        if (auto const name = m_prettyName())
            return name;
    }
    if (auto const name = assignment("/etc/machine-info", "PRETTY_HOSTNAME"))
        return name;
    std::array<char, HOST_NAME_MAX + 1> name {};
    if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0')
        return std::nullopt;
    return name.data();
}

std::optional<std::string> MachineInfo::machineModel() const
{
    // Some makers write the name into the family or the version and a part number into the name.
    for (auto const* path : { "/sys/class/dmi/id/product_family", "/sys/class/dmi/id/product_name",
             "/sys/class/dmi/id/product_version", "/sys/firmware/devicetree/base/model", "/proc/device-tree/model" }) {
        auto const text = read(path);
        if (!text)
            continue;
        auto const name = trimmed(*text);
        if (!isPlaceholder(name))
            return std::string(name);
    }
    return std::nullopt;
}

std::string MachineInfo::operatingSystemVersionString() const
{
    for (auto const* path : { "/etc/os-release", "/usr/lib/os-release" }) {
        if (auto const name = assignment(path, "PRETTY_NAME"))
            return *name;
    }
    utsname system {};
    if (uname(&system) != 0)
        return "Linux";
    return std::string(system.sysname) + " " + system.release;
}

} // namespace backends
