#include "iOS/HostNameProvider.h"

#include "platform/Platform.h"
#include "platform/foundation/HostInfo.h"

namespace paneweld {

std::optional<std::string> HostNameProvider::localizedName(platform::Platform& platform)
{
    return platform.hostInfo().localizedName();
}

platform::Class HostNameProvider::runtimeClass(platform::Platform& (*platform)())
{
    platform::Class description { "PaneweldHostNameProvider" };
    description.allocInit = [] { return std::make_shared<HostNameProvider>(); };
    description.classMethods["localizedName"] = [platform](platform::List const&) {
        auto const name = localizedName(platform());
        return name ? platform::Value(*name) : platform::Value();
    };
    return description;
}

} // namespace paneweld
