#pragma once

#include "backends/linux/host/Accelerator.h"
#include "platform/log/OSLog.h"

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace backends {

// One value of the settings of GNOME and its relatives: a text, or a list of texts. Anything else has none.
struct GnomeSetting {
    std::string schema;
    std::string key;
    std::vector<std::string> texts {};

    bool operator==(GnomeSetting const&) const = default;
};

// What `gsettings list-recursively` writes: a line a setting, with schema, key and value in GVariant's text format.
// A line that is none of these is no setting.
std::vector<GnomeSetting> gnomeSettings(std::string_view output);

// Where a desktop of this kind keeps its shortcuts.
struct GnomeDesktop {
    // As in XDG_CURRENT_DESKTOP, and as people call it.
    std::string_view identifier;
    std::string_view name;
    // Some are missing on some versions of the desktop.
    std::span<std::string_view const> schemas;
    // The user's own: a list of places, and the schema of what lies there. Names in the list that are no paths stand
    // below the folder.
    std::string_view customSchema {};
    std::string_view customKey {};
    std::string_view customEntrySchema {};
    std::string_view customFolder {};
};

// Null for a desktop of another kind.
GnomeDesktop const* gnomeDesktop(std::string_view identifier);

// What the user has set now, in the order of schemas and keys. Runs gsettings, some milliseconds for each schema, until
// the deadline. What could not be read is missing, and the log says why. Any thread.
std::vector<DesktopShortcut> readGnomeShortcuts(
    GnomeDesktop const& desktop, std::chrono::steady_clock::time_point deadline, platform::OSLog const& log);

} // namespace backends
