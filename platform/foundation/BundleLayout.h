#pragma once

#include "platform/foundation/Forward.h"

#include <string>
#include <vector>

namespace platform {

// Where the things of a bundle lie. Told by the folders directly inside: "Resources" (a framework, also one whose
// versions hide behind links), else "Contents", else "Support Files", else everything lies in the bundle itself.
struct BundleLayout {
    std::string resources;
    std::string info; // the file
    std::string frameworks; // whether it is there is not checked
    std::vector<std::string> executableFolders; // in order of search

    static BundleLayout of(std::string const& bundlePath, BundleFiles const& files);
};

} // namespace platform
