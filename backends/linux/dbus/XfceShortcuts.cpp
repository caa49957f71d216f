#include "backends/linux/dbus/XfceShortcuts.h"

#include "backends/linux/dbus/BusMessage.h"
#include "platform/foundation/Dictionary.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <systemd/sd-bus.h>

namespace backends {

using platform::NSError;
using Clock = std::chrono::steady_clock;

namespace {

constexpr char const* channel = "xfce4-keyboard-shortcuts";
constexpr std::string_view override_ = "override";

struct EndBus {
    void operator()(sd_bus* bus) const
    {
        // Without a flush, which could wait for a bus that does not read.
        sd_bus_close(bus);
        sd_bus_unref(bus);
    }
};
using BusHandle = std::unique_ptr<sd_bus, EndBus>;

struct EndMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using MessageHandle = std::unique_ptr<sd_bus_message, EndMessage>;

NSError failure(int result, std::string const& words = {})
{
    return { "NSPOSIXErrorDomain", -result, words.empty() ? std::strerror(-result) : words };
}

std::uint64_t microsecondsUntil(Clock::time_point deadline)
{
    auto const left = std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now()).count();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(left, 0));
}

int keepAnswer(sd_bus_message* answer, void* kept, sd_bus_error*) noexcept
{
    static_cast<MessageHandle*>(kept)->reset(sd_bus_message_ref(answer));
    return 0;
}

platform::Result<XfceSettings> settingsIn(BusMessage const& answer)
{
    auto const all = answer.argument(0);
    if (!all.asDictionary())
        return failure(-EBADMSG);
    XfceSettings settings;
    for (auto const& [name, value] : *all.asDictionary()) {
        if (auto const* const text = value.asText())
            settings.emplace_back(name, *text);
        else if (value.kind() == platform::ValueKind::Boolean)
            settings.emplace_back(name, *value.asBool());
    }
    return settings;
}

// "/commands/custom/<Alt>F2": of which provider, from whom, and what. A property of such a property is none.
struct Place {
    std::string_view provider;
    std::string_view origin;
    std::string_view name;
};

std::optional<Place> placeOf(std::string_view property)
{
    if (!property.starts_with('/'))
        return std::nullopt;
    auto const providerEnd = property.find('/', 1);
    auto const originEnd = property.find('/', providerEnd == std::string_view::npos ? providerEnd : providerEnd + 1);
    if (originEnd == std::string_view::npos)
        return std::nullopt;
    auto const name = property.substr(originEnd + 1);
    if (name.empty() || name.find('/') != std::string_view::npos)
        return std::nullopt;
    return Place { property.substr(1, providerEnd - 1), property.substr(providerEnd + 1, originEnd - providerEnd - 1),
        name };
}

} // namespace

std::vector<DesktopShortcut> xfceShortcuts(XfceSettings const& settings)
{
    std::set<std::string_view> overridden;
    for (auto const& [property, value] : settings) {
        auto const place = placeOf(property);
        auto const* const isSet = std::get_if<bool>(&value);
        if (place && place->origin == "custom" && place->name == override_ && isSet && *isSet)
            overridden.insert(place->provider);
    }
    std::vector<DesktopShortcut> shortcuts;
    for (auto const& [property, value] : settings) {
        auto const place = placeOf(property);
        auto const* const action = std::get_if<std::string>(&value);
        // An empty action is how a shortcut is taken away.
        if (!place || !action || action->empty())
            continue;
        bool const counts
            = place->origin == "custom" || (place->origin == "default" && !overridden.contains(place->provider));
        auto accelerator = counts ? acceleratorFromGtk(place->name) : std::nullopt;
        if (accelerator)
            shortcuts.push_back({ "Xfce: " + *action, std::move(*accelerator) });
    }
    return shortcuts;
}

platform::Result<XfceSettings> readXfceSettings(Clock::time_point deadline)
{
    sd_bus* opened = nullptr;
    int result = sd_bus_open_user(&opened);
    if (result < 0)
        return failure(result);
    BusHandle const bus(opened);

    sd_bus_message* created = nullptr;
    result = sd_bus_message_new_method_call(
        bus.get(), &created, "org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", "GetAllProperties");
    MessageHandle const question(created);
    if (result >= 0)
        result = sd_bus_message_append(question.get(), "ss", channel, "/");
    // On a desktop that is not Xfce nothing is to start.
    if (result >= 0)
        result = sd_bus_message_set_auto_start(question.get(), 0);
    // Not the call that waits: before the bus has said hello its time has no limit.
    MessageHandle answer;
    if (result >= 0)
        result = sd_bus_call_async(bus.get(), nullptr, question.get(), keepAnswer, &answer,
            std::max<std::uint64_t>(microsecondsUntil(deadline), 1));
    while (result >= 0 && !answer) {
        auto const left = microsecondsUntil(deadline);
        if (left == 0)
            return failure(-ETIMEDOUT);
        result = sd_bus_process(bus.get(), nullptr);
        if (result == 0)
            result = sd_bus_wait(bus.get(), left);
        if (result == -EINTR)
            result = 0;
    }
    if (result < 0)
        return failure(result);
    if (sd_bus_message_is_method_error(answer.get(), nullptr)) {
        auto const* const error = sd_bus_message_get_error(answer.get());
        return failure(-sd_bus_message_get_errno(answer.get()), error->message ? error->message : error->name);
    }
    return settingsIn(readMessage(answer.get()));
}

} // namespace backends
