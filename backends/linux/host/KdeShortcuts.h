#pragma once

#include "backends/linux/host/Accelerator.h"
#include "platform/log/OSLog.h"

#include <string>
#include <string_view>
#include <vector>

namespace backends {

// The shortcuts in the text of KDE's file kglobalshortcutsrc, in its order. A line "name=current,default,label" in a
// group holds the alternatives of one action.
std::vector<DesktopShortcut> kdeShortcuts(std::string_view text);

// The same from the user's own file, as it is now. None when there is no file; the log says why. Any thread.
std::vector<DesktopShortcut> readKdeShortcuts(platform::OSLog const& log);

} // namespace backends
