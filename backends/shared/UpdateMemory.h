#pragma once

#include "backends/shared/UpdateChoice.h"
#include "backends/shared/UpdateItem.h"
#include "backends/shared/UpdateSettings.h"
#include "backends/shared/UpdateWorld.h"

#include <optional>
#include <string>

namespace backends {

// What an updater remembers of its user from one start of the app to the next, under the keys that such apps use for
// it. The world must outlive it. Main thread only.
class UpdateMemory {
public:
    explicit UpdateMemory(UpdateWorld& world)
        : m_world(world)
    {
    }

    bool hasLaunchedBefore() const;
    void noteLaunch();
    void allowChecks(bool areAllowed);

    // Seconds; absent when there was none. A check in the future, as after a wrong clock, counts as one of now.
    std::optional<double> sinceLastCheck();
    void noteCheck();

    // What a feed is to be read for.
    UpdateCircumstances circumstances(UpdateSettings const& settings, bool isUserInitiated);
    // It is not offered again by itself, nor are its corrections when it is a major upgrade.
    void skip(UpdateItem const& item, std::string const& hostVersion);

private:
    std::string text(char const* key) const;
    std::optional<double> number(char const* key) const;
    int rolloutGroup();

    UpdateWorld& m_world;
};

} // namespace backends
