#pragma once

#include "platform/log/OSLog.h"

namespace platform {
class Platform;
}

namespace paneweld {

struct OSLog {
    // The plug-in's one log channel: category "pane-weld" of the app's identifier, or of "app.quorvel.iosapp" when it
    // has none. Made on first use. Any thread.
    static platform::OSLog const& paneweld(platform::Platform& platform);
};

// The identifier of the app, or a stand-in for an app without one: what log lines are filed under.
std::string logSubsystem(platform::Platform& platform, char const* standIn);

} // namespace paneweld
