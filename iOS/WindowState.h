#pragma once

#include "iOS/WindowAction.h"
#include "platform/foundation/UUID.h"

#include <map>
#include <set>
#include <string>

namespace paneweld {

struct ResizeBrainstormWindow;

// What the show tracking and all resize pipelines share, always in a Locked box.
struct State {
    // The ids of the windows that are shown.
    std::set<std::string> windowIdentifiers {};
    // Which preferred size each window got last.
    std::map<std::string, platform::UUID> lastAppliedResizeIDByWindowIdentifier {};

    // Follows a show or a close. A close forgets the size that was applied, so that a window reopened under its id
    // gets its next one even if the request is an old one. Whether another set of windows is shown now.
    bool apply(WindowAction const& action);

    // Whether the request carries a preferred size that its window has not had. Asking counts as applying.
    bool takePreferredSize(ResizeBrainstormWindow const& request);
};

} // namespace paneweld
