#include "backends/linux/dbus/Notifications.h"

#include "platform/foundation/Dictionary.h"

#include <cstdint>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::List;
using platform::Value;

namespace {

constexpr auto service = "org.freedesktop.Notifications";
constexpr auto object = "/org/freedesktop/Notifications";
constexpr std::int32_t asTheServerLikes = -1;
constexpr std::int32_t never = 0;

Bus::Member member(char const* name) { return { service, object, service, name }; }

// Servers read a body as markup or do not, and a feed's words have no business in it either way.
std::string withoutMarkup(std::string const& text)
{
    std::string plain;
    for (char const character : text) {
        if (character != '<' && character != '>' && character != '&')
            plain += character;
    }
    return plain;
}

} // namespace

Notifications::Notifications(EventLoop& loop, std::string busAddress, std::string appName, std::string appIdentifier,
    platform::OSLog log, platform::Seconds patience)
    : m_loop(loop)
    , m_busAddress(std::move(busAddress))
    , m_appName(std::move(appName))
    , m_appIdentifier(std::move(appIdentifier))
    , m_log(std::move(log))
    , m_patience(patience)
{
}

bool Notifications::connect()
{
    if (m_bus && !m_isLost)
        return true;
    m_showing = {};
    m_actions = {};
    m_closings = {};
    m_serverChanges = {};
    m_lost = {};
    m_bus.reset();
    m_shown = 0;
    m_isAsking = false;
    auto bus = Bus::connect(m_loop, m_busAddress);
    if (!bus) {
        complain(bus.error().localizedDescription);
        return false;
    }
    m_bus = bus.take();
    m_isLost = false;
    m_lost = m_bus->whenLost([this] { handleLoss(); });
    m_actions = m_bus->whenSignal(member("ActionInvoked"), [this](auto const& signal) { handleAction(signal); });
    m_closings = m_bus->whenSignal(member("NotificationClosed"), [this](auto const& signal) { handleClosed(signal); });
    m_serverChanges = m_bus->whenOwnerChanges(
        service, [this](auto const& before, auto const& after) { handleServerChange(before, after); });
    return true;
}

void Notifications::show(Notice const& notice, Answer answered)
{
    m_answered = std::move(answered);
    m_notice = notice;
    m_wait = {};
    m_isWanted = connect();
    m_nobodyThere = m_isWanted ? LoopSource {} : m_loop.soon([this] { answer({}); });
    m_isNextWaiting = m_isWanted && m_isAsking;
    if (m_isWanted && !m_isAsking)
        send();
}

void Notifications::send()
{
    m_isAsking = true;
    m_isNextWaiting = false;
    List actions;
    for (auto const& [name, text] : m_notice.actions) {
        actions.emplace_back(name);
        actions.emplace_back(text);
    }
    Dictionary hints;
    if (!m_appIdentifier.empty())
        hints["desktop-entry"] = Value(m_appIdentifier);
    m_showing = m_bus->call(member("Notify"), "susssasa{sv}i",
        { Value(m_appName), Value(m_shown), Value(""), Value(m_notice.title), Value(withoutMarkup(m_notice.body)),
            Value(actions), Value(hints), Value(m_notice.isLasting ? never : asTheServerLikes) },
        [this](auto const& reply) { handleShown(reply); });
}

void Notifications::handleShown(BusMessage const& reply)
{
    m_isAsking = false;
    auto const number = reply.argument(0).asUInt32();
    if (reply.isError() || !number) {
        complain(reply.isError() ? reply.error : "odd answer");
        m_shown = 0;
        if (!m_isNextWaiting)
            answer({});
    } else {
        m_shown = *number;
        m_server = reply.sender;
        m_hasComplained = false;
    }
    if (m_isNextWaiting)
        send();
    else if (!m_isWanted)
        close();
}

void Notifications::close()
{
    m_answered = nullptr;
    m_nobodyThere = {};
    m_wait = {};
    m_isWanted = false;
    m_isNextWaiting = false;
    if (m_bus && !m_isLost && m_shown != 0)
        m_bus->send(member("CloseNotification"), "u", { Value(m_shown) });
}

bool Notifications::isOurs(BusMessage const& signal) const
{
    return m_shown != 0 && signal.sender == m_server && signal.argument(0).asUInt32() == m_shown;
}

void Notifications::handleAction(BusMessage const& signal)
{
    auto const name = signal.argument(1);
    if (!isOurs(signal) || !name.asText())
        return;
    // It is over, and what its server does with it has nothing to do with the next one.
    m_bus->send(member("CloseNotification"), "u", { Value(std::exchange(m_shown, 0)) });
    answer(*name.asText());
}

void Notifications::handleClosed(BusMessage const& signal)
{
    if (!isOurs(signal))
        return;
    m_shown = 0;
    answer({});
}

void Notifications::handleServerChange(std::string const& before, std::string const& after)
{
    if (m_shown != 0 && before == m_server) {
        // Its notices are gone from the screen with it, and their numbers mean nothing to the next.
        m_shown = 0;
        // What is just being told will be shown, or refused, by whoever is asked.
        if (m_isAsking)
            return;
        if (!m_notice.isLasting || !m_answered) {
            answer({});
            return;
        }
        m_wait = m_loop.after(m_patience, [this] {
            m_wait = {};
            // The bus may know a program to start. Nobody is the answer of one that knows none.
            send();
        });
    }
    if (m_wait && !after.empty()) {
        m_wait = {};
        send();
    }
}

void Notifications::handleLoss()
{
    m_isLost = true;
    m_shown = 0;
    m_isAsking = false;
    m_isNextWaiting = false;
    m_wait = {};
    // Not from here: who hears it may want to show something else, over another connection.
    m_nobodyThere = m_loop.soon([this] { answer({}); });
}

void Notifications::complain(std::string const& reason)
{
    if (!std::exchange(m_hasComplained, true))
        m_log.error("nothing can be shown to the user: %{public}s", { reason });
}

void Notifications::answer(std::string const& action)
{
    // Once. A handler may show the next one.
    if (auto const answered = std::exchange(m_answered, nullptr))
        answered(action);
}

} // namespace backends
