#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// One release of the app as a feed tells of it. A value. Empty texts are absent.
struct UpdateItem {
    std::string version {};
    // For people; the version where the feed has no other.
    std::string displayVersion {};
    std::string title {};
    // What is downloaded. Empty for an item that only tells of a release, at `link`.
    std::string url {};
    std::string link {};
    // Bytes, as the feed promises them. Absent when it does not.
    std::optional<std::uint64_t> length {};
    // Base64, as it stands in the feed.
    std::string signature {};
    // A page for people, on the web.
    std::string releaseNotesURL {};
    // Empty is the channel that everybody gets.
    std::string channel {};
    std::string minimumSystemVersion {};
    std::string maximumSystemVersion {};
    // Below this version of the app the update is only offered, never installed by itself.
    std::string minimumAutomaticVersion {};
    // A user of an older version than this is asked again about an update that was skipped.
    std::string ignoreSkippedBelowVersion {};
    // Which system the item is for; empty for any.
    std::string system {};
    bool isCritical = false;
    // Critical only for those who have an older version than this; empty for everybody.
    std::string criticalBelowVersion {};
    // To be read and not to be installed: for these versions of the app and for all older than the other one. Neither
    // named: for everybody.
    bool isInformational = false;
    std::vector<std::string> informationalVersions {};
    std::string informationalBelowVersion {};
    // Seconds since 1970; absent when the feed does not say, or not in a form that is known.
    std::optional<double> date {};
    // Seconds between two groups of users. Absent: everybody at once.
    std::optional<double> rolloutInterval {};

    bool operator==(UpdateItem const&) const = default;
};

// What a feed says as a whole.
struct UpdateFeed {
    std::vector<UpdateItem> items {};
    // When it was built, seconds since 1970.
    std::optional<double> date {};
};

} // namespace backends
