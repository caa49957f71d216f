#pragma once

#include "backends/shared/UpdateItem.h"
#include "platform/foundation/NSError.h"

#include <functional>
#include <optional>

namespace backends {

// How a world talks to its user about updates. One thing is shown at a time, and showing the next takes it away. Main
// thread only; no answer comes inside a call.
class UpdateUserDriver {
public:
    virtual ~UpdateUserDriver() = default;

    // Who reads first has not decided: the update is shown once more.
    enum class Choice { Install, Later, Skip, ReadNotes };

    // Whether to look for updates from time to time. Absent when it was closed without an answer.
    virtual void showPermissionRequest(std::function<void(std::optional<bool> isAllowed)> answered) = 0;
    // With a problem the update can be told of, but not installed.
    virtual void showUpdate(
        UpdateItem const& item, std::optional<platform::NSError> const& problem, std::function<void(Choice)> answered)
        = 0;
    // An update that is only there to be read about: Install opens its page.
    virtual void showInformation(UpdateItem const& item, std::function<void(Choice)> answered) = 0;
    virtual void showProgress(UpdateItem const& item, double fraction, std::function<void()> cancelled) = 0;
    // The version that runs goes on running, until the user chooses to restart the app or ends it.
    virtual void showInstalled(UpdateItem const& item, std::function<void()> restartChosen) = 0;
    virtual void showNoUpdate() = 0;
    virtual void showError(platform::NSError const& error) = 0;
    // What waits for an answer is shown once more.
    virtual void bringToFront() = 0;
    virtual void dismiss() = 0;
};

} // namespace backends
