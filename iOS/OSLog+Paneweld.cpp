#include "iOS/OSLog+Paneweld.h"

#include "platform/Platform.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"

namespace paneweld {

std::string logSubsystem(platform::Platform& platform, char const* standIn)
{
    auto const mainBundle = platform.bundles().mainBundle();
    return mainBundle ? mainBundle->bundleIdentifier().value_or(standIn) : standIn;
}

platform::OSLog const& OSLog::paneweld(platform::Platform& platform)
{
    static platform::OSLog const log(platform.logSink(), logSubsystem(platform, "app.quorvel.iosapp"), "pane-weld");
    return log;
}

} // namespace paneweld
