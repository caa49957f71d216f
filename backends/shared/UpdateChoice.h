#pragma once

#include "backends/shared/UpdateItem.h"

#include <optional>
#include <set>
#include <string>

namespace backends {

// Who is asking for an update.
struct UpdateCircumstances {
    std::string hostVersion {};
    std::string systemVersion {};
    std::set<std::string> channels {};
    // What the user does not want to hear of again; empty for nothing. Of a major upgrade also what made it one.
    std::string skippedVersion {};
    std::string skippedMajorVersion {};
    // Seconds since 1970.
    double now = 0;
    // Which of the groups of a phased roll-out this user is in.
    int rolloutGroup = 0;
    // Someone who asks gets what there is, skipped or not yet rolled out.
    bool isUserInitiated = false;
};

constexpr int numberOfRolloutGroups = 7;

// The item of the highest version that is meant for this machine, of equal ones the first, if it is newer than the app
// itself. Older and equal versions are never chosen.
std::optional<UpdateItem> chooseUpdate(UpdateFeed const& feed, UpdateCircumstances const& circumstances);

// What the item is to an app of this version.
bool isCriticalFor(UpdateItem const& item, std::string const& hostVersion);
bool isInformationalFor(UpdateItem const& item, std::string const& hostVersion);
// An upgrade that the user has to agree to, whatever they have agreed to in general.
bool isMajorFor(UpdateItem const& item, std::string const& hostVersion);

} // namespace backends
