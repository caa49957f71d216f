#include "backends/shared/UpdateMemory.h"

#include <charconv>
#include <cmath>
#include <random>

namespace backends {

namespace {

constexpr auto lastCheckKey = "SULastCheckTime";
constexpr auto launchedKey = "SUHasLaunchedBefore";
constexpr auto automaticChecksKey = "SUEnableAutomaticChecks";
constexpr auto skippedKey = "SUSkippedVersion";
constexpr auto skippedMajorKey = "SUSkippedMajorVersion";
constexpr auto groupKey = "SUUpdateGroupIdentifier";

} // namespace

std::string UpdateMemory::text(char const* key) const
{
    auto const value = m_world.setting(key);
    auto const* const text = value ? value->asText() : nullptr;
    return text ? *text : std::string();
}

std::optional<double> UpdateMemory::number(char const* key) const
{
    auto const kept = text(key);
    double number = 0;
    auto const [end, error] = std::from_chars(kept.data(), kept.data() + kept.size(), number);
    if (error != std::errc() || end != kept.data() + kept.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

bool UpdateMemory::hasLaunchedBefore() const { return !text(launchedKey).empty(); }

void UpdateMemory::noteLaunch() { m_world.keep(launchedKey, "YES"); }

void UpdateMemory::allowChecks(bool areAllowed) { m_world.keep(automaticChecksKey, areAllowed ? "YES" : "NO"); }

std::optional<double> UpdateMemory::sinceLastCheck()
{
    auto const last = number(lastCheckKey);
    if (!last)
        return std::nullopt;
    auto const since = m_world.now() - *last;
    if (since < 0)
        noteCheck();
    return since;
}

void UpdateMemory::noteCheck() { m_world.keep(lastCheckKey, std::to_string(std::llround(m_world.now()))); }

UpdateCircumstances UpdateMemory::circumstances(UpdateSettings const& settings, bool isUserInitiated)
{
    UpdateCircumstances circumstances;
    circumstances.hostVersion = settings.hostVersion;
    circumstances.systemVersion = m_world.systemVersion();
    circumstances.channels = settings.channels;
    circumstances.skippedVersion = text(skippedKey);
    circumstances.skippedMajorVersion = text(skippedMajorKey);
    circumstances.now = m_world.now();
    circumstances.rolloutGroup = rolloutGroup();
    circumstances.isUserInitiated = isUserInitiated;
    return circumstances;
}

void UpdateMemory::skip(UpdateItem const& item, std::string const& hostVersion)
{
    m_world.keep(skippedKey, item.version);
    m_world.keep(skippedMajorKey, isMajorFor(item, hostVersion) ? item.minimumAutomaticVersion : std::string());
}

int UpdateMemory::rolloutGroup()
{
    if (auto const kept = number(groupKey))
        return std::abs(static_cast<int>(std::fmod(*kept, numberOfRolloutGroups)));
    std::random_device random;
    auto const group = static_cast<int>(random() % numberOfRolloutGroups);
    m_world.keep(groupKey, std::to_string(group));
    return group;
}

} // namespace backends
