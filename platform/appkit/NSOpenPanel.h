#pragma once

#include "platform/foundation/URL.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {

enum class ModalResponse { Cancel = 0, OK = 1 };

// The desktop's dialog for choosing files or folders. Main thread only.
class NSOpenPanel {
public:
    virtual ~NSOpenPanel() = default;

    bool canChooseDirectories = false;
    bool canChooseFiles = true;
    bool allowsMultipleSelection = false;
    bool canCreateDirectories = true;
    std::optional<URL> directoryURL {};
    std::string message {};
    std::string prompt {};

    // Blocks the caller until the user has closed the dialog.
    virtual ModalResponse runModal() = 0;
    // What was chosen, in order. Empty before runModal and after a cancel.
    virtual std::vector<URL> urls() const = 0;
};

} // namespace platform
