#include "iOS/NotificationCenter+Paneweld.h"

#include <cmath>

namespace paneweld {

using platform::Callable;
using platform::Dictionary;
using platform::List;
using platform::Notification;
using platform::Value;

namespace {

template<typename T>
std::optional<T> copied(T const* value)
{
    return value ? std::optional<T>(*value) : std::nullopt;
}

std::optional<std::string> text(Notification const& notification, char const* key)
{
    auto const* const value = notification.value(key);
    return value ? copied(value->asText()) : std::nullopt;
}

std::optional<bool> boolean(Notification const& notification, char const* key)
{
    auto const* const value = notification.value(key);
    return value ? value->asBool() : std::nullopt;
}

std::optional<std::uint32_t> unsigned32(Notification const& notification, char const* key)
{
    auto const* const value = notification.value(key);
    return value ? value->asUInt32() : std::nullopt;
}

// A length that is not finite counts as not given: no window can have it.
std::optional<double> length(Notification const& notification, char const* key)
{
    auto const* const value = notification.value(key);
    auto const number = value ? value->asDouble() : std::nullopt;
    return number && std::isfinite(*number) ? number : std::nullopt;
}

Callable const* callable(Notification const& notification, char const* key, char const* signature)
{
    auto const* const value = notification.value(key);
    return value ? value->asCallable(signature) : nullptr;
}

std::vector<platform::URL> urlsIn(List const& list)
{
    std::vector<platform::URL> urls;
    for (auto const& value : list) {
        if (auto const* const url = value.asURL())
            urls.push_back(*url);
    }
    return urls;
}

void set(Dictionary& dictionary, char const* key, std::optional<double> const& number)
{
    if (number)
        dictionary[key] = *number;
}

Dictionary errorDictionary(platform::NSError const& error)
{
    return { { "domain", error.domain }, { "code", error.code },
        { "localizedDescription", error.localizedDescription } };
}

std::optional<platform::NSError> errorFrom(Value const& value)
{
    auto const* const dictionary = value.asDictionary();
    if (!dictionary)
        return std::nullopt;
    platform::NSError error;
    if (auto const found = dictionary->find("domain"); found != dictionary->end() && found->second.asText())
        error.domain = *found->second.asText();
    if (auto const found = dictionary->find("code"); found != dictionary->end())
        error.code = found->second.asInt().value_or(0);
    if (auto const found = dictionary->find("localizedDescription");
        found != dictionary->end() && found->second.asText())
        error.localizedDescription = *found->second.asText();
    return error;
}

} // namespace

#define PANEWELD_NOTIFICATION_NAME(accessor, text)                                                                     \
    platform::NotificationName const& NotificationName::accessor()                                                     \
    {                                                                                                                  \
        static platform::NotificationName const name { text };                                                         \
        return name;                                                                                                   \
    }

PANEWELD_NOTIFICATION_NAME(requestFileAccess, "Paneweld.RequestFileAccess")
PANEWELD_NOTIFICATION_NAME(executeMailScript, "Paneweld.ExecuteMailScript")
PANEWELD_NOTIFICATION_NAME(updateGlobalNewBrainstormShortcut, "Paneweld.UpdateGlobalNewBrainstormShortcut")
PANEWELD_NOTIFICATION_NAME(globalNewBrainstormShortcutTriggered, "Paneweld.GlobalNewBrainstormShortcutTriggered")
PANEWELD_NOTIFICATION_NAME(openSettingsOrOnboarding, "Paneweld.OpenSettingsOrOnboarding")
PANEWELD_NOTIFICATION_NAME(importDroppedURLs, "Paneweld.ImportDroppedURLs")
PANEWELD_NOTIFICATION_NAME(openNewWindow, "Paneweld.OpenNewWindow")
PANEWELD_NOTIFICATION_NAME(forceOpenNewBrainstormWindow, "Paneweld.ForceOpenNewBrainstormWindow")
PANEWELD_NOTIFICATION_NAME(quitApp, "Paneweld.QuitApp")
PANEWELD_NOTIFICATION_NAME(brainstormWindowPinStateDidChange, "Paneweld.BrainstormWindowPinStateDidChange")
PANEWELD_NOTIFICATION_NAME(updateMenuItemTitle, "Paneweld.UpdateMenuItemTitle")
PANEWELD_NOTIFICATION_NAME(windowIdentifierDidLoad, "Paneweld.WindowIdentifierDidLoad")
PANEWELD_NOTIFICATION_NAME(
    brainstormWindowPreferredHeightDidChange, "Paneweld.BrainstormWindowPreferredHeightDidChange")
PANEWELD_NOTIFICATION_NAME(brainstormWindowWillResize, "Paneweld.BrainstormWindowWillResize")
PANEWELD_NOTIFICATION_NAME(brainstormWindowDidResize, "Paneweld.BrainstormWindowDidResize")
PANEWELD_NOTIFICATION_NAME(brainstormWindowDidEndLiveResize, "Paneweld.BrainstormWindowDidEndLiveResize")
PANEWELD_NOTIFICATION_NAME(brainstormWindowDidReceiveDrop, "Paneweld.BrainstormWindowDidReceiveDrop")
PANEWELD_NOTIFICATION_NAME(openFileURL, "Paneweld.OpenFileURL")
PANEWELD_NOTIFICATION_NAME(checkForUpdates, "Paneweld.CheckForUpdates")

#undef PANEWELD_NOTIFICATION_NAME

std::optional<RequestFileAccess> RequestFileAccess::from(Notification const& notification)
{
    auto const* const completion = callable(notification, "completion", completionSignature);
    if (!completion)
        return std::nullopt;
    return RequestFileAccess { [call = completion->call](std::optional<std::vector<platform::URL>> const& urls) {
        call({ urls ? Value(List(urls->begin(), urls->end())) : Value() });
    } };
}

Dictionary RequestFileAccess::userInfo() const
{
    return { { "completion", Callable { completionSignature, [call = completion](List const& arguments) {
                                           auto const* const urls = arguments.empty() ? nullptr : arguments[0].asList();
                                           call(urls ? std::optional(urlsIn(*urls)) : std::nullopt);
                                           return Value();
                                       } } } };
}

std::optional<ExecuteMailScript> ExecuteMailScript::from(Notification const& notification)
{
    auto const handler = text(notification, "handler");
    auto const* const params = notification.value("params");
    auto const* const list = params ? params->asList() : nullptr;
    auto const* const completion = callable(notification, "completion", completionSignature);
    if (!handler || !list || !completion)
        return std::nullopt;
    return ExecuteMailScript { *handler, *list,
        [call = completion->call](
            std::optional<std::string> const& result, std::optional<platform::NSError> const& error) {
            call({ result ? Value(*result) : Value(), error ? Value(errorDictionary(*error)) : Value() });
        } };
}

Dictionary ExecuteMailScript::userInfo() const
{
    Callable wrapped { completionSignature, [call = completion](List const& arguments) {
                          auto const argument
                              = [&](std::size_t i) { return i < arguments.size() ? arguments[i] : Value(); };
                          call(copied(argument(0).asText()), errorFrom(argument(1)));
                          return Value();
                      } };
    return Dictionary::of<"completion", "handler", "params">(std::move(wrapped), handler, params);
}

std::optional<UpdateGlobalNewBrainstormShortcut> UpdateGlobalNewBrainstormShortcut::from(
    Notification const& notification)
{
    auto const keyCode = unsigned32(notification, "keyCode");
    auto const modifiers = unsigned32(notification, "modifiers");
    auto const isEnabled = boolean(notification, "isEnabled");
    if (!keyCode || !modifiers || !isEnabled)
        return std::nullopt;
    return UpdateGlobalNewBrainstormShortcut { *keyCode, *modifiers, *isEnabled };
}

Dictionary UpdateGlobalNewBrainstormShortcut::userInfo() const
{
    return Dictionary::of<"isEnabled", "keyCode", "modifiers">(isEnabled, keyCode, modifiers);
}

std::optional<ImportDroppedURLs> ImportDroppedURLs::from(Notification const& notification)
{
    auto const* const value = notification.value("urls");
    if (!value || !value->asList())
        return std::nullopt;
    return ImportDroppedURLs { urlsIn(*value->asList()) };
}

Dictionary ImportDroppedURLs::userInfo() const { return Dictionary::of<"urls">(List(urls.begin(), urls.end())); }

std::optional<BrainstormWindowPinStateDidChange> BrainstormWindowPinStateDidChange::from(
    Notification const& notification)
{
    auto const isPinned = boolean(notification, "isPinned");
    auto const windowID = text(notification, "windowID");
    if (!isPinned || !windowID)
        return std::nullopt;
    return BrainstormWindowPinStateDidChange { *windowID, *isPinned };
}

Dictionary BrainstormWindowPinStateDidChange::userInfo() const
{
    return Dictionary::of<"isPinned", "windowID">(isPinned, windowID);
}

std::optional<UpdateMenuItemTitle> UpdateMenuItemTitle::from(Notification const& notification)
{
    auto const hasUser = boolean(notification, "hasUser");
    return hasUser ? std::optional(UpdateMenuItemTitle { *hasUser }) : std::nullopt;
}

Dictionary UpdateMenuItemTitle::userInfo() const { return Dictionary::of<"hasUser">(hasUser); }

std::optional<WindowIdentifierDidLoad> WindowIdentifierDidLoad::from(Notification const& notification)
{
    auto const windowID = text(notification, "windowID");
    auto const localizedTitle = text(notification, "localizedTitle");
    if (!windowID || !localizedTitle)
        return std::nullopt;
    return WindowIdentifierDidLoad { *windowID, *localizedTitle };
}

Dictionary WindowIdentifierDidLoad::userInfo() const
{
    return Dictionary::of<"localizedTitle", "windowID">(localizedTitle, windowID);
}

std::optional<BrainstormWindowPreferredHeightDidChange> BrainstormWindowPreferredHeightDidChange::from(
    Notification const& notification)
{
    auto const windowID = text(notification, "windowID");
    if (!windowID)
        return std::nullopt;
    return BrainstormWindowPreferredHeightDidChange { *windowID, boolean(notification, "animate").value_or(true),
        length(notification, "minHeight"), length(notification, "maxHeight"), length(notification, "preferredWidth"),
        length(notification, "preferredHeight") };
}

Dictionary BrainstormWindowPreferredHeightDidChange::userInfo() const
{
    auto dictionary = Dictionary::of<"animate", "windowID">(animate, windowID);
    set(dictionary, "minHeight", minHeight);
    set(dictionary, "maxHeight", maxHeight);
    set(dictionary, "preferredWidth", preferredWidth);
    set(dictionary, "preferredHeight", preferredHeight);
    return dictionary;
}

std::optional<BrainstormWindowResize> BrainstormWindowResize::from(Notification const& notification)
{
    auto const height = length(notification, "height");
    auto const minHeight = length(notification, "minHeight");
    auto const maxHeight = length(notification, "maxHeight");
    auto const windowID = text(notification, "windowID");
    if (!height || !minHeight || !maxHeight || !windowID)
        return std::nullopt;
    return BrainstormWindowResize { *height, *minHeight, *maxHeight, *windowID };
}

Dictionary BrainstormWindowResize::userInfo() const
{
    return Dictionary::of<"height", "maxHeight", "minHeight", "windowID">(height, maxHeight, minHeight, windowID);
}

std::optional<BrainstormWindowDidEndLiveResize> BrainstormWindowDidEndLiveResize::from(Notification const& notification)
{
    auto const windowID = text(notification, "windowID");
    auto const width = length(notification, "width");
    auto const height = length(notification, "height");
    if (!windowID || !width || !height)
        return std::nullopt;
    return BrainstormWindowDidEndLiveResize { *windowID, *width, *height };
}

Dictionary BrainstormWindowDidEndLiveResize::userInfo() const
{
    return Dictionary::of<"height", "width", "windowID">(height, width, windowID);
}

std::optional<OpenFileURL> OpenFileURL::from(Notification const& notification)
{
    auto const* const address = notification.value("url");
    if (!address)
        return std::nullopt;
    auto opened = copied(address->asURL());
    if (auto const* const written = address->asText(); !opened && written)
        opened = platform::URL::fromString(*written);
    if (!opened)
        return std::nullopt;

    OpenFileURL request { *opened, {} };
    auto const* const bookmarks = notification.value("bookmarks");
    auto const* const entries = bookmarks ? bookmarks->asList() : nullptr;
    if (!entries)
        return request;
    for (auto const& value : *entries) {
        auto const* const entry = value.asDictionary();
        auto const* const url = entry ? entry->value("url") : nullptr;
        auto const* const data = entry ? entry->value("data") : nullptr;
        if (url && url->asURL() && data && data->asData())
            request.bookmarks.push_back({ *url->asURL(), *data->asData() });
    }
    return request;
}

Dictionary OpenFileURL::userInfo() const
{
    List entries;
    for (auto const& entry : bookmarks)
        entries.push_back(Dictionary::of<"data", "url">(entry.data, entry.url));
    return Dictionary::of<"bookmarks", "url">(std::move(entries), url);
}

std::shared_ptr<platform::ObservationToken> addObserver(platform::NotificationCenter& center,
    platform::NotificationName const& name, std::shared_ptr<platform::NSObject> object,
    platform::NotificationCenter::Handler handler)
{
    return center.addObserver(
        { name, std::move(object), "not on the main thread: iOS/NotificationCenter+Paneweld, line 15" },
        std::move(handler));
}

} // namespace paneweld
