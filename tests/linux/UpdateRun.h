#pragma once

#include "backends/linux/host/UpdateInstaller.h"
#include "tests/linux/ReleasedApp.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace paneweld_tests {

// The whole of an update, from the archive on, without the web and the user. The words of its failure, or none.
std::string update(backends::UpdateTarget const& target, std::string const& archive, backends::UpdateItem const& item,
    std::vector<std::string> const& keys, backends::UpdateInstaller::Step atStep = {});

mode_t modeOf(std::string const& path);

} // namespace paneweld_tests
