#include "iOS/NSBundle+Paneweld.h"

#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"
#include "platform/runtime/Class.h"
#include "platform/runtime/ClassRegistry.h"

namespace paneweld {

namespace {

constexpr char const* bundleName = "Paneweld.framework";

// The bundle's own class of the name, else anybody's; either counts only if objects can be made of it.
platform::Class const* loadedClass(platform::Bundle& bundle, char const* name)
{
    if (bundle.loadAndReturnError())
        return nullptr;
    auto const& registry = platform::ClassRegistry::shared();
    auto const* const own = registry.classNamed(bundle.bundlePath(), name);
    if (own && own->isObjectClass())
        return own;
    auto const* const found = registry.classFromString(name);
    return found && found->isObjectClass() ? found : nullptr;
}

std::shared_ptr<platform::NSObject> entryObject(platform::Bundle& bundle, char const* name)
{
    auto const* const found = loadedClass(bundle, name);
    return found ? found->allocInit() : nullptr;
}

} // namespace

std::shared_ptr<platform::Bundle> NSBundle::paneweld(platform::Bundles& bundles)
{
    auto const mainBundle = bundles.mainBundle();
    if (auto const frameworks = mainBundle ? mainBundle->privateFrameworksURL() : std::nullopt) {
        auto const path = frameworks->filePath().value_or("");
        auto const url = platform::URL::fileURL(
            path + (path.ends_with('/') ? "" : "/") + bundleName, platform::URL::IsDirectory::Yes);
        if (auto bundle = bundles.bundle(url))
            return bundle;
    }
    for (auto const& framework : bundles.allFrameworks()) {
        if (framework->bundlePath().find("Paneweld") != std::string::npos)
            return framework;
    }
    return nullptr;
}

std::shared_ptr<platform::NSObject> NSBundle::appKitController(platform::Bundle& bundle)
{
    return entryObject(bundle, "PaneweldAppKitController");
}

std::shared_ptr<platform::NSObject> NSBundle::updateController(platform::Bundle& bundle)
{
    return entryObject(bundle, "PaneweldUpdateController");
}

std::optional<std::string> NSBundle::macHostName(platform::Bundle& bundle)
{
    auto const* const provider = loadedClass(bundle, "PaneweldHostNameProvider");
    if (!provider || !provider->respondsToSelector("localizedName"))
        return std::nullopt;
    auto const name = platform::perform(*provider, "localizedName");
    auto const* const text = name ? name->asText() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

} // namespace paneweld
