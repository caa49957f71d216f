#pragma once

#include "platform/foundation/Value.h"

#include <string>

namespace platform {
class Platform;
}

namespace paneweld {

// Texts for people, from the plug-in's own string tables and never the host's. Any thread.
struct String {
    // The text of a key, or the key itself when the plug-in has no text for it or its bundle is missing.
    static std::string localized(platform::Platform& platform, std::string const& key);
    // The text as a format, with numbers written the way of the user's locale. Without a bundle the key comes back
    // as it is, arguments unused.
    static std::string localized(platform::Platform& platform, std::string const& key, platform::List const& arguments);
};

} // namespace paneweld
