#pragma once

#include "backends/linux/host/UpdateTarget.h"
#include "backends/shared/UpdateItem.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// Puts a new version of an app in the place of the old one. It may be killed at any point: the old version starts until
// the one step in which the two change places, and the new one from then on. What is left of an attempt is cleared away
// by the next. One at a time; any thread, and all of it blocks.
class UpdateInstaller {
public:
    // Called at each step with its name; tests end the process there.
    using Step = std::function<void(char const* name)>;

    explicit UpdateInstaller(UpdateTarget target, Step atStep = {});
    ~UpdateInstaller();
    UpdateInstaller(UpdateInstaller const&) = delete;
    UpdateInstaller& operator=(UpdateInstaller const&) = delete;

    // An empty place for the archive. Fails when another process is at it.
    platform::Result<std::string> prepare();
    std::string archivePath() const;

    // All of the archive against the promised length and the keys. Nothing of it has been looked at before.
    std::optional<platform::NSError> verify(UpdateItem const& item, std::vector<std::string> const& keys) const;

    // What must be true of the app in the archive, where the archive is one of a folder: it says so in its Info.
    struct Identity {
        std::string bundleIdentifier {};
        std::string version {};
    };
    // Only after verify.
    std::optional<platform::NSError> install(Identity const& identity);
    void clear();

private:
    // The folder in the archive, which is the promised app.
    platform::Result<std::string> unpack(Identity const& identity);
    std::optional<platform::NSError> makeLikeTheOldOne(std::string const& anew) const;
    void at(char const* step) const;

    UpdateTarget m_target;
    Step m_atStep;
    std::string m_staging;
    // Held open, and with it the lock.
    int m_lock = -1;
};

} // namespace backends
