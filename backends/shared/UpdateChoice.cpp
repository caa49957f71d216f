#include "backends/shared/UpdateChoice.h"

#include "backends/shared/UpdateVersion.h"

#include <algorithm>

namespace backends {

namespace {

bool isForThisSystem(UpdateItem const& item, UpdateCircumstances const& circumstances)
{
    if (!item.system.empty() && item.system != "linux")
        return false;
    if (!item.channel.empty() && !circumstances.channels.contains(item.channel))
        return false;
    auto const& system = circumstances.systemVersion;
    if (!item.minimumSystemVersion.empty() && compareVersions(system, item.minimumSystemVersion) < 0)
        return false;
    return item.maximumSystemVersion.empty() || compareVersions(system, item.maximumSystemVersion) <= 0;
}

bool isRolledOut(UpdateItem const& item, UpdateCircumstances const& circumstances)
{
    if (circumstances.isUserInitiated || !item.rolloutInterval || !item.date
        || isCriticalFor(item, circumstances.hostVersion))
        return true;
    return circumstances.now >= *item.date + *item.rolloutInterval * circumstances.rolloutGroup;
}

bool isSkipped(UpdateItem const& item, UpdateCircumstances const& circumstances)
{
    auto const& skipped = circumstances.skippedVersion;
    if (circumstances.isUserInitiated || skipped.empty() || isCriticalFor(item, circumstances.hostVersion))
        return false;
    if (compareVersions(item.version, skipped) <= 0)
        return true;
    // Whoever skipped a major upgrade skipped its later corrections with it, as far as the feed lets them.
    if (!isMajorFor(item, circumstances.hostVersion) || circumstances.skippedMajorVersion.empty()
        || compareVersions(item.minimumAutomaticVersion, circumstances.skippedMajorVersion) != 0)
        return false;
    return item.ignoreSkippedBelowVersion.empty() || compareVersions(skipped, item.ignoreSkippedBelowVersion) >= 0;
}

} // namespace

std::optional<UpdateItem> chooseUpdate(UpdateFeed const& feed, UpdateCircumstances const& circumstances)
{
    UpdateItem const* best = nullptr;
    for (auto const& item : feed.items) {
        if (!isForThisSystem(item, circumstances) || !isRolledOut(item, circumstances))
            continue;
        if (!best || compareVersions(item.version, best->version) > 0)
            best = &item;
    }
    if (!best || compareVersions(best->version, circumstances.hostVersion) <= 0 || isSkipped(*best, circumstances))
        return std::nullopt;
    return *best;
}

bool isCriticalFor(UpdateItem const& item, std::string const& hostVersion)
{
    return item.isCritical
        && (item.criticalBelowVersion.empty() || compareVersions(hostVersion, item.criticalBelowVersion) < 0);
}

bool isInformationalFor(UpdateItem const& item, std::string const& hostVersion)
{
    if (!item.isInformational)
        return false;
    auto const& versions = item.informationalVersions;
    auto const& below = item.informationalBelowVersion;
    return (versions.empty() && below.empty())
        || std::any_of(versions.begin(), versions.end(),
            [&](auto const& version) { return compareVersions(hostVersion, version) == 0; })
        || (!below.empty() && compareVersions(hostVersion, below) < 0);
}

bool isMajorFor(UpdateItem const& item, std::string const& hostVersion)
{
    return !item.minimumAutomaticVersion.empty() && compareVersions(hostVersion, item.minimumAutomaticVersion) < 0;
}

} // namespace backends
