#pragma once

#include "platform/foundation/FileManager.h"

namespace backends {

// This machine's files, as this process may see them.
class FileSystem : public platform::FileManager {
public:
    // HOME, else what the user database says.
    platform::URL homeDirectoryForCurrentUser() const override;
    bool isReadableFile(std::string const& path) const override;
};

} // namespace backends
