#pragma once

#include "platform/foundation/Value.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace backends {

// What an app says in its Info about its updates, and what its user has chosen since. Texts of an Info are all text, so
// "YES", "true" and "1" are yes, and numbers are read from text.
struct UpdateSettings {
    std::string bundleIdentifier {};
    std::string hostVersion {};
    std::string feedURL {}; // SUFeedURL
    // Base64. Any of them may have signed an update: SUPublicEDKey and the list SUPublicEDKeys.
    std::vector<std::string> publicKeys {};
    // SURequireSignedFeed. Absent: it depends on what the updates are.
    std::optional<bool> requiresSignedFeed {};
    double maximumFeedAge = 0; // SUSignedFeedMaximumAge: seconds; only for signed feeds
    // SUEnableAutomaticChecks. Absent: nobody has decided yet.
    std::optional<bool> checksAutomatically {};
    double checkInterval = 0; // SUScheduledCheckInterval: seconds; 0 for never
    // SUAutomaticallyUpdate, where SUAllowsAutomaticUpdates does not forbid it.
    bool updatesAutomatically = false;
    bool showsReleaseNotes = true; // SUShowReleaseNotes
    // The user's languages, best first: a feed may say the same in several. Not of the Info.
    std::vector<std::string> languages {};
    // SUAllowedChannels, beside the one that everybody gets.
    std::set<std::string> channels {};

    // The look-up gives the value of a key: the user's choice, else that of the app.
    static UpdateSettings from(std::function<std::optional<platform::Value>(std::string const& key)> const& lookUp);
};

} // namespace backends
