#include "backends/shared/Appcast.h"

#include "backends/shared/FeedDate.h"
#include "platform/foundation/Languages.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace backends {

using platform::NSError;

namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string sparkle(std::string const& name) { return "http://www.andymatuschak.org/xml-namespaces/sparkle " + name; }

std::string textOf(XMLElement const& parent, std::string const& name)
{
    auto const* const found = parent.child(name);
    return found ? std::string(platform::trimmed(found->text, blanks)) : std::string();
}

// (XML 1.0, section 2.12)
constexpr auto languageAttribute = "http://www.w3.org/XML/1998/namespace lang";

// Of the elements of one name the one in the best of the languages; else one in no language, else the first.
std::string localizedText(XMLElement const& parent, std::string const& name, std::vector<std::string> const& languages)
{
    std::vector<std::string> offered;
    std::vector<std::string> texts;
    for (auto const& element : parent.children) {
        if (element.name != name)
            continue;
        offered.push_back(element.attribute(languageAttribute));
        texts.emplace_back(platform::trimmed(element.text, blanks));
    }
    if (texts.empty())
        return {};
    auto best = std::find(offered.begin(), offered.end(), "");
    for (auto const& language : languages) {
        if (auto const match = platform::matchingLocalization(language, offered); match && !match->empty()) {
            best = std::find(offered.begin(), offered.end(), *match);
            break;
        }
    }
    return best == offered.end() ? texts.front() : texts[static_cast<std::size_t>(best - offered.begin())];
}

template<typename Number>
std::optional<Number> numberFrom(std::string const& text)
{
    Number number {};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

// "My_App_1.3.4.zip" is version 1.3.4.
std::string versionFromFileName(std::string const& url)
{
    auto name = url.substr(url.rfind('/') + 1);
    auto const underscore = name.rfind('_');
    if (underscore == std::string::npos)
        return {};
    name.erase(0, underscore + 1);
    return name.substr(0, name.rfind('.'));
}

std::string withEncodedBlanks(std::string_view url)
{
    std::string encoded;
    for (char const character : url)
        encoded += character == ' ' ? std::string("%20") : std::string(1, character);
    return encoded;
}

bool isWebAddress(std::string const& url)
{
    auto const lower = platform::asciiLowerCase(url);
    bool const hasControls
        = std::any_of(url.begin(), url.end(), [](unsigned char byte) { return byte < 0x21 || byte == 0x7F; });
    return !hasControls && (lower.starts_with("https://") || lower.starts_with("http://"))
        && lower.size() > lower.find("//") + 2;
}

bool isChannelName(std::string const& name)
{
    return std::all_of(name.begin(), name.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
            || (character >= '0' && character <= '9') || character == '.' || character == '_' || character == '-';
    });
}

std::string firstOf(std::string first, std::string second) { return first.empty() ? second : first; }

void readUrgency(XMLElement const& element, UpdateItem& item)
{
    if (auto const* const critical = element.child(sparkle("criticalUpdate"))) {
        item.isCritical = true;
        item.criticalBelowVersion = critical->attribute(sparkle("version"));
    }
    if (auto const* const tags = element.child(sparkle("tags")))
        item.isCritical |= tags->child(sparkle("criticalUpdate")) != nullptr;
    if (auto const* const informational = element.child(sparkle("informationalUpdate"))) {
        item.isInformational = true;
        item.informationalBelowVersion = textOf(*informational, sparkle("belowVersion"));
        for (auto const& version : informational->children) {
            if (version.name == sparkle("version"))
                item.informationalVersions.emplace_back(platform::trimmed(version.text, blanks));
        }
    }
    item.rolloutInterval = numberFrom<double>(textOf(element, sparkle("phasedRolloutInterval")));
    item.date = dateFromText(textOf(element, "pubDate"));
}

std::optional<std::string> readEnclosure(XMLElement const& element, UpdateItem& item)
{
    auto const* const enclosure = element.child("enclosure");
    if (!enclosure)
        return item.link.empty() ? std::optional<std::string>("has neither an enclosure nor a link") : std::nullopt;
    item.url = withEncodedBlanks(platform::trimmed(enclosure->attribute("url"), blanks));
    if (!isWebAddress(item.url))
        return "has an enclosure without a web address";
    item.signature = enclosure->attribute(sparkle("edSignature"));
    item.system = enclosure->attribute(sparkle("os"));
    item.version = enclosure->attribute(sparkle("version"));
    item.displayVersion = enclosure->attribute(sparkle("shortVersionString"));
    auto const length = std::string(platform::trimmed(enclosure->attribute("length"), blanks));
    item.length = numberFrom<std::uint64_t>(length);
    if (!length.empty() && !item.length)
        return "has a length that is no number";
    // Many feeds have a zero there because nobody has counted.
    if (item.length == 0u)
        item.length.reset();
    return std::nullopt;
}

// A page that a browser is sent to is on the web, whoever wrote the feed.
std::string releaseNotesIn(XMLElement const& element, std::vector<std::string> const& languages)
{
    for (auto const* name : { "releaseNotesLink", "fullReleaseNotesLink" }) {
        if (auto link = localizedText(element, sparkle(name), languages); isWebAddress(link))
            return link;
    }
    return {};
}

platform::Result<UpdateItem> itemFrom(XMLElement const& element, std::vector<std::string> const& languages)
{
    UpdateItem item;
    item.title = localizedText(element, "title", languages);
    if (auto link = textOf(element, "link"); isWebAddress(link))
        item.link = std::move(link);
    auto const problem = readEnclosure(element, item);
    if (problem)
        return NSError { "Updates", 1, "an item of the feed " + *problem };
    item.version = firstOf(item.version, textOf(element, sparkle("version")));
    item.version = firstOf(item.version, versionFromFileName(item.url));
    if (item.version.empty())
        return NSError { "Updates", 2, "an item of the feed has no version" };
    item.displayVersion = firstOf(item.displayVersion, textOf(element, sparkle("shortVersionString")));
    item.displayVersion = firstOf(item.displayVersion, item.version);
    item.channel = textOf(element, sparkle("channel"));
    if (!isChannelName(item.channel))
        return NSError { "Updates", 3, "an item of the feed has a channel with an odd name" };
    item.releaseNotesURL = releaseNotesIn(element, languages);
    item.minimumSystemVersion = textOf(element, sparkle("minimumSystemVersion"));
    item.maximumSystemVersion = textOf(element, sparkle("maximumSystemVersion"));
    item.minimumAutomaticVersion = textOf(element, sparkle("minimumAutoupdateVersion"));
    item.ignoreSkippedBelowVersion = textOf(element, sparkle("ignoreSkippedUpgradesBelowVersion"));
    readUrgency(element, item);
    if (item.url.empty()) {
        // Nothing to download: there is only the page to read.
        item.isInformational = true;
        item.informationalVersions.clear();
        item.informationalBelowVersion.clear();
    }
    return item;
}

} // namespace

platform::Result<UpdateFeed> updateFeedFrom(XMLElement const& document, std::vector<std::string> const& languages)
{
    auto const* const channel = document.name == "rss" ? document.child("channel") : nullptr;
    if (!channel)
        return NSError { "Updates", 4, "the feed is no RSS document with a channel" };
    UpdateFeed feed;
    feed.date = dateFromText(firstOf(textOf(*channel, "lastBuildDate"), textOf(*channel, "pubDate")));
    for (auto const& element : channel->children) {
        if (element.name != "item")
            continue;
        auto item = itemFrom(element, languages);
        if (!item)
            return item.error();
        feed.items.push_back(item.take());
    }
    return feed;
}

} // namespace backends
