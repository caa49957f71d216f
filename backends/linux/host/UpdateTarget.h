#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <optional>
#include <string>

namespace backends {

// What an app consists of on the disk, as far as an update replaces it: one file that carries everything (an AppImage),
// or one folder. A value; links are followed.
struct UpdateTarget {
    enum class Kind { File, Folder };

    Kind kind = Kind::Folder;
    std::string path {};

    // The file that the app was started from, when its main bundle lies in what that file mounted, else the folder of
    // the main bundle. The texts are those of APPIMAGE and APPDIR, and empty where those are not set.
    static platform::Result<UpdateTarget> find(
        std::string const& mainBundle, std::string const& appImage, std::string const& appFolder);

    std::string parent() const;
    std::string name() const;
    // Where an update is prepared: beside the app, so that it can take its place in one step.
    std::string stagingFolder() const;

    // Why it cannot be replaced here, in words for people. Nobody is asked for a password: who may not write, does not
    // update. Leaves nothing behind.
    std::optional<platform::NSError> whyNotReplaceable() const;
};

} // namespace backends
