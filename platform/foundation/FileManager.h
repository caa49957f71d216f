#pragma once

#include "platform/foundation/URL.h"

#include <string>

namespace platform {

// The few questions that the plug-in asks of the file system.
class FileManager {
public:
    virtual ~FileManager() = default;

    virtual URL homeDirectoryForCurrentUser() const = 0;
    // Whether this process may read what is at the path now.
    virtual bool isReadableFile(std::string const& path) const = 0;
};

} // namespace platform
