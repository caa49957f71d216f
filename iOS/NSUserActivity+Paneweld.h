#pragma once

#include "platform/foundation/NSUserActivity.h"

#include <memory>
#include <set>
#include <string>

namespace paneweld {

// The activity types for which a host opens its windows: each names the kind of window wanted.
struct ActivityType {
    static constexpr char const* brainstormWindow = "app.quorvel.brainstorm-window";
    static constexpr char const* iOSAppWindow = "app.quorvel.ios-app-window";
    static constexpr char const* onboardingWindow = "app.quorvel.onboarding-window";
    static constexpr char const* settingsWindow = "app.quorvel.settings-window";
};

// The first activity, in the sequence's own order, that decides a new window's kind; null when none does. Types are
// compared byte for byte.
template<typename Sequence>
std::shared_ptr<platform::NSUserActivity> firstWindowActivity(Sequence const& activities)
{
    std::set<std::string> const windowTypes { ActivityType::brainstormWindow, ActivityType::iOSAppWindow,
        ActivityType::onboardingWindow, ActivityType::settingsWindow };
    for (auto const& activity : activities) {
        if (windowTypes.contains(activity->activityType()))
            return activity;
    }
    return nullptr;
}

} // namespace paneweld
