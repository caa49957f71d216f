#include "backends/linux/host/FeedDownload.h"
#include "backends/linux/host/XMLReader.h"
#include "backends/shared/Appcast.h"
#include "backends/shared/UpdateChoice.h"
#include "backends/shared/UpdateVersion.h"

#include <cstdint>
#include <string>

// Whatever a feed says, what is chosen is newer than the app and comes from the web; and nothing that was not signed
// passes where a signature is demanded.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    backends::UpdateSettings settings;
    settings.publicKeys = { "wHs4N6/1BT0S6zELOMUJ9qXDdvU7Vay6JNJIrOtM0EY=" };
    settings.requiresSignedFeed = true;
    if (backends::feedFromBytes(bytes, settings))
        __builtin_trap();
    auto const document = backends::readXML(bytes);
    if (!document)
        return 0;
    auto const feed = backends::updateFeedFrom(document.value());
    if (!feed)
        return 0;
    backends::UpdateCircumstances circumstances;
    circumstances.hostVersion = "1.0";
    circumstances.systemVersion = "6.1";
    circumstances.isUserInitiated = true;
    auto const chosen = chooseUpdate(feed.value(), circumstances);
    if (chosen
        && (backends::compareVersions(chosen->version, "1.0") <= 0 || (chosen->url.empty() && chosen->link.empty())))
        __builtin_trap();
    return 0;
}
