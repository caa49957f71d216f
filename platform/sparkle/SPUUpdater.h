#pragma once

namespace platform {

// What looks for newer versions of the app, fetches and installs them. Main thread only.
class SPUUpdater {
public:
    virtual ~SPUUpdater() = default;

    // Whether a check that the user asks for would do anything now: false before the start and while a check or a
    // download that the user did not ask for is under way; true while an update is shown, which is then shown again.
    virtual bool canCheckForUpdates() const = 0;
};

} // namespace platform
