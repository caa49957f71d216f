#include "backends/linux/host/FeedDownload.h"

#include "backends/linux/host/UpdateSignature.h"
#include "backends/linux/host/XMLReader.h"
#include "backends/shared/Appcast.h"
#include "backends/shared/FeedSignature.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace backends {

using platform::NSError;

namespace {

constexpr std::uint64_t mostBytes = 8 * 1024 * 1024;
constexpr platform::Seconds mostTime { 120 };

std::span<std::uint8_t const> bytesOf(std::string_view text)
{
    return { reinterpret_cast<std::uint8_t const*>(text.data()), text.size() };
}

} // namespace

platform::Result<UpdateFeed> feedFromBytes(std::string const& bytes, UpdateSettings const& settings)
{
    auto const signature = feedSignatureIn(bytes);
    if (!signature && settings.requiresSignedFeed == true)
        return NSError { "Updates", 1003, "the feed is refused: it is not signed" };
    if (signature) {
        if (auto const problem = whyNotSigned(bytesOf(signature->content), signature->signature, settings.publicKeys))
            return NSError { "Updates", 1003, "the feed is refused: " + problem->localizedDescription };
    }
    // What is read is what was signed, and nothing behind it.
    auto const document = readXML(signature ? signature->content : std::string_view(bytes));
    if (!document)
        return NSError { "Updates", 1004, "the feed cannot be read: " + document.error().localizedDescription };
    return updateFeedFrom(document.value(), settings.languages);
}

platform::Result<UpdateFeed> downloadFeed(UpdateSettings const& settings, Download download)
{
    if (settings.feedURL.empty())
        return NSError { "Updates", 1001, "the app names no feed of updates" };
    // What could never be installed is not looked for.
    if (settings.publicKeys.empty())
        return NSError { "Updates", 1002, "the app has no key to check updates with" };
    download.url = settings.feedURL;
    download.maximum = mostBytes;
    download.deadline = mostTime;
    std::string bytes;
    auto const problem = fetch(download, [&](std::string_view piece) {
        bytes += piece;
        return true;
    });
    if (problem)
        return *problem;
    return feedFromBytes(bytes, settings);
}

} // namespace backends
