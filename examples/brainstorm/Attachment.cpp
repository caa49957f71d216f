#include "examples/brainstorm/Attachment.h"
#include "platform/foundation/URL.h"

#include <algorithm>
#include <string_view>

namespace ideas {

namespace {

// Strict, where the reader of addresses is lenient: whoever types "http://" into a sentence has typed a sentence.
bool isAddress(std::string_view text)
{
    bool const isWhole
        = std::all_of(text.begin(), text.end(), [](char letter) { return letter > ' ' && letter < 127; });
    return isWhole && (text.starts_with("file://") || text.starts_with("https://") || text.starts_with("http://"));
}

Ref<GIcon> iconOf(std::string const& path, bool isFolder)
{
    if (isFolder)
        return Ref<GIcon>(g_themed_icon_new("folder-symbolic"));
    OwnedText const type(g_content_type_guess(path.c_str(), nullptr, 0, nullptr));
    return Ref<GIcon>(g_content_type_get_symbolic_icon(type.get()));
}

} // namespace

std::optional<Attachment> attachmentOf(std::string const& idea)
{
    auto const url = isAddress(idea) ? platform::URL::fromString(idea) : std::nullopt;
    if (!url)
        return std::nullopt;
    auto const path = url->filePath();
    if (!path)
        return Attachment { idea, Ref<GIcon>(g_themed_icon_new("insert-link-symbolic")) };
    OwnedText const name(g_filename_display_basename(path->c_str()));
    return Attachment { name.get(), iconOf(*path, idea.ends_with('/')) };
}

std::string wordsOf(std::string const& idea)
{
    auto const attachment = attachmentOf(idea);
    return attachment ? attachment->name : idea;
}

} // namespace ideas
