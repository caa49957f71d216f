#include "backends/shared/FeedSignature.h"

#include "platform/foundation/Text.h"

namespace backends {

namespace {

constexpr std::string_view opening = "<!-- sparkle-signatures:";
constexpr std::string_view closing = "-->";
constexpr std::string_view blanks = " \t\r\n";

std::string_view valueIn(std::string_view comment, std::string_view name)
{
    auto const start = comment.find(name);
    if (start == std::string_view::npos)
        return {};
    auto const value = comment.substr(start + name.size());
    return platform::trimmed(value.substr(0, value.find('\n')), blanks);
}

} // namespace

std::optional<FeedSignature> feedSignatureIn(std::string_view feed)
{
    auto const start = feed.rfind(opening);
    if (start == std::string_view::npos)
        return std::nullopt;
    auto const comment = feed.substr(start);
    // The end of the comment is the end of the feed: nothing unsigned may follow.
    if (comment.find(closing) != comment.rfind(closing) || !platform::trimmed(comment, blanks).ends_with(closing))
        return std::nullopt;
    auto const signature = valueIn(comment, "edSignature:");
    auto const length = valueIn(comment, "length:");
    if (signature.empty() || length != std::to_string(start))
        return std::nullopt;
    return FeedSignature { feed.substr(0, start), std::string(signature) };
}

} // namespace backends
