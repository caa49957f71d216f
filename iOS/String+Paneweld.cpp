#include "iOS/String+Paneweld.h"

#include "iOS/NSBundle+Paneweld.h"
#include "platform/Platform.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"
#include "platform/foundation/Format.h"
#include "platform/foundation/Locale.h"

namespace paneweld {

namespace {

// An anchor for looking up resources by class. Nobody asks it: texts come from the bundle that NSBundle finds. It
// stays, so that a resource look-up by class has something to name.
class [[maybe_unused]] ResourceBundleClass { };

} // namespace

std::string String::localized(platform::Platform& platform, std::string const& key)
{
    auto const bundle = NSBundle::paneweld(platform.bundles());
    return bundle ? bundle->localizedString(key, "", "") : key;
}

std::string String::localized(platform::Platform& platform, std::string const& key, platform::List const& arguments)
{
    auto const bundle = NSBundle::paneweld(platform.bundles());
    if (!bundle)
        return key;
    auto const locale = platform::Locale::current();
    return platform::formatted(bundle->localizedString(key, "", ""), arguments, &locale);
}

} // namespace paneweld
