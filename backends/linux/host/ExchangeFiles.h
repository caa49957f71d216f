#pragma once

#include <string>

namespace backends {

// Two names of one file system change places in one step that nobody can see half of (renameat2(2), RENAME_EXCHANGE).
// False, with errno, when that was not done.
bool exchangeFiles(std::string const& first, std::string const& second);

// What was written below or into the file at the path is on the disk when this returns true.
bool writeThrough(std::string const& path);

} // namespace backends
