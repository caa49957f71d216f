#include "platform/foundation/Languages.h"

#include "platform/foundation/Text.h"

#include <algorithm>

namespace platform {

namespace {

// "zh_Hans-CN" as { "zh", "hans", "cn" }.
std::vector<std::string> subtags(std::string_view language)
{
    std::vector<std::string> tags(1);
    for (char const character : asciiLowerCase(language)) {
        if (character == '-' || character == '_')
            tags.emplace_back();
        else
            tags.back() += character;
    }
    return tags;
}

// A script has four letters; absent means that the language's usual one is meant.
std::string scriptOf(std::vector<std::string> const& tags)
{
    return tags.size() > 1 && tags[1].size() == 4 ? tags[1] : std::string();
}

template<typename Predicate>
std::optional<std::string> firstOf(std::vector<std::string> const& localizations, Predicate predicate)
{
    auto const found = std::find_if(localizations.begin(), localizations.end(),
        [&](std::string const& localization) { return predicate(subtags(localization)); });
    return found == localizations.end() ? std::nullopt : std::optional<std::string>(*found);
}

} // namespace

std::optional<std::string> matchingLocalization(
    std::string_view language, std::vector<std::string> const& localizations)
{
    auto const wanted = subtags(language);
    if (wanted[0].empty())
        return std::nullopt;
    for (auto shorter = wanted; !shorter.empty(); shorter.pop_back()) {
        if (auto const same = firstOf(localizations, [&](auto const& tags) { return tags == shorter; }))
            return same;
    }
    auto const script = scriptOf(wanted);
    return firstOf(localizations, [&](auto const& tags) {
        auto const other = scriptOf(tags);
        return tags[0] == wanted[0] && (script.empty() || other.empty() || script == other);
    });
}

} // namespace platform
