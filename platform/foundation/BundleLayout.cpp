#include "platform/foundation/BundleLayout.h"

#include "platform/foundation/BundleFiles.h"

namespace platform {

BundleLayout BundleLayout::of(std::string const& bundlePath, BundleFiles const& files)
{
    auto const resources = bundlePath + "/Resources";
    if (files.isDirectory(resources))
        return { resources, resources + "/Info.plist", bundlePath + "/Frameworks",
            { bundlePath + "/MacOS", bundlePath } };
    for (char const* const name : { "/Contents", "/Support Files" }) {
        auto const inside = bundlePath + name;
        if (files.isDirectory(inside))
            return { inside + "/Resources", inside + "/Info.plist", inside + "/Frameworks",
                { inside + "/MacOS", inside, bundlePath } };
    }
    return { bundlePath, bundlePath + "/Info.plist", bundlePath + "/Frameworks",
        { bundlePath + "/MacOS", bundlePath } };
}

} // namespace platform
