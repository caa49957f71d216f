#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"

#include <string>

namespace backends {

// This machine's files, as this process may see them.
class FileSystem : public platform::FileManager {
public:
    // HOME, else what the user database says.
    platform::URL homeDirectoryForCurrentUser() const override;
    bool isReadableFile(std::string const& path) const override;
};

// All of a file. Fails when it cannot be opened, with the cause.
platform::Result<std::string> readFile(std::string const& path);

} // namespace backends
