#include "backends/shared/UpdateSettings.h"

#include "platform/foundation/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace backends {

using platform::Value;

namespace {

constexpr double day = 86400;
constexpr double shortestInterval = 3600;
// A replayed feed, old but rightly signed, can hide a newer one for this long.
constexpr double usualMaximumFeedAge = 30 * day;

std::optional<double> numberFrom(Value const& value)
{
    if (auto const number = value.asDouble())
        return number;
    auto const* const text = value.asText();
    if (!text)
        return std::nullopt;
    double number = 0;
    auto const trimmed = platform::trimmed(*text, " \t\r\n");
    auto const [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
    if (error != std::errc() || end != trimmed.data() + trimmed.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

std::optional<bool> truthFrom(Value const& value)
{
    if (auto const truth = value.asBool())
        return truth;
    auto const* const text = value.asText();
    if (!text)
        return std::nullopt;
    auto const lower = platform::asciiLowerCase(*text);
    if (lower == "yes" || lower == "true" || lower == "1")
        return true;
    if (lower == "no" || lower == "false" || lower == "0")
        return false;
    return std::nullopt;
}

std::vector<std::string> textsFrom(Value const& value)
{
    if (auto const* const text = value.asText())
        return { *text };
    std::vector<std::string> texts;
    if (auto const* const list = value.asList()) {
        for (auto const& entry : *list) {
            if (auto const* const text = entry.asText())
                texts.push_back(*text);
        }
    }
    return texts;
}

} // namespace

UpdateSettings UpdateSettings::from(std::function<std::optional<Value>(std::string const&)> const& lookUp)
{
    auto const value = [&](char const* key) { return lookUp(key).value_or(Value()); };
    auto const text = [&](char const* key) {
        auto const texts = textsFrom(value(key));
        return texts.empty() ? std::string() : texts.front();
    };
    UpdateSettings settings;
    settings.bundleIdentifier = text("CFBundleIdentifier");
    settings.hostVersion = text("CFBundleVersion");
    settings.feedURL = text("SUFeedURL");
    settings.publicKeys = textsFrom(value("SUPublicEDKey"));
    auto const more = textsFrom(value("SUPublicEDKeys"));
    settings.publicKeys.insert(settings.publicKeys.end(), more.begin(), more.end());
    settings.requiresSignedFeed = truthFrom(value("SURequireSignedFeed"));
    settings.maximumFeedAge = numberFrom(value("SUSignedFeedMaximumAge")).value_or(usualMaximumFeedAge);
    settings.checksAutomatically = truthFrom(value("SUEnableAutomaticChecks"));
    settings.checkInterval = numberFrom(value("SUScheduledCheckInterval")).value_or(day);
    if (settings.checkInterval != 0)
        settings.checkInterval = std::max(settings.checkInterval, shortestInterval);
    settings.updatesAutomatically = truthFrom(value("SUAutomaticallyUpdate")).value_or(false)
        && truthFrom(value("SUAllowsAutomaticUpdates")).value_or(true);
    settings.showsReleaseNotes = truthFrom(value("SUShowReleaseNotes")).value_or(true);
    auto const channels = textsFrom(value("SUAllowedChannels"));
    settings.channels = { channels.begin(), channels.end() };
    return settings;
}

} // namespace backends
