#include "backends/linux/dbus/GlobalShortcuts.h"

#include "backends/linux/dbus/BusAddress.h"

#include <utility>

namespace backends {

using platform::Dictionary;
using platform::List;
using platform::Value;

namespace {

constexpr auto interface = "GlobalShortcuts";
constexpr auto sessionInterface = "org.freedesktop.portal.Session";

std::string textIn(Dictionary const& dictionary, std::string const& key)
{
    auto const found = dictionary.find(key);
    auto const* const text = found == dictionary.end() ? nullptr : found->second.asText();
    return text ? *text : std::string();
}

} // namespace

GlobalShortcuts::GlobalShortcuts(
    EventLoop& loop, std::string busAddress, std::string appID, platform::OSLog log, Observer observer)
    : m_loop(loop)
    , m_busAddress(std::move(busAddress))
    , m_appID(std::move(appID))
    , m_log(std::move(log))
    , m_observer(std::move(observer))
    , m_return(loop, m_busAddress, [this] { busMayBeBack(); })
{
}

void GlobalShortcuts::bind(Shortcut const& shortcut)
{
    bool const isNewWish = !std::exchange(m_isWanted, true);
    // Told off and on again, a user may expect another try of what the desktop did not do.
    bool const isRetry = isNewWish && (m_state == State::NotBound || m_state == State::Absent);
    bool const isSame = m_shortcut && m_shortcut->id == shortcut.id;
    if (m_state == State::Declined || (isSame && !isRetry))
        return;
    endSession();
    m_shortcut = shortcut;
    ask();
}

void GlobalShortcuts::ask()
{
    m_waitsForPortal = false;
    setState(State::Asking);
    if (!m_portal || m_portal->isLost())
        connect();
    if (!m_portal)
        return;
    m_versionQuestion = m_portal->askVersion(interface, [this](auto const& version) {
        if (version) {
            m_return.found();
            createSession();
            return;
        }
        m_log.error("no shortcuts from the desktop: %{public}s", { version.error().localizedDescription });
        bool const cameMeanwhile = std::exchange(m_waitsForPortal, true);
        setState(State::Absent);
        if (cameMeanwhile && m_isWanted)
            ask();
    });
}

void GlobalShortcuts::connect()
{
    leavePortal();
    auto portal = Portal::connect(m_loop, m_busAddress, m_appID);
    if (!portal) {
        m_log.error(
            "no shortcuts from the desktop, no session bus: %{public}s", { portal.error().localizedDescription });
        m_return.await();
        setState(State::Absent);
        return;
    }
    usePortal(portal.take());
}

void GlobalShortcuts::busMayBeBack()
{
    if (!m_isWanted || m_state != State::Absent || (m_portal && !m_portal->isLost()))
        return;
    auto portal = Portal::connect(m_loop, withoutIdentity(m_busAddress), m_appID);
    if (!portal) {
        m_return.await();
        return;
    }
    leavePortal();
    usePortal(portal.take());
    ask();
}

void GlobalShortcuts::leavePortal()
{
    // Its rules go with it.
    for (auto* const rule : { &m_activated, &m_deactivated, &m_changed, &m_closed })
        *rule = {};
    m_portal.reset();
}

void GlobalShortcuts::usePortal(std::unique_ptr<Portal> portal)
{
    m_portal = std::move(portal);
    m_portal->setObserver([this] { portalDidGo(); }, [this] { portalDidCome(); });
    m_activated
        = m_portal->whenSignal(interface, "Activated", [this](auto const& signal) { handlePress(signal, true); });
    m_deactivated
        = m_portal->whenSignal(interface, "Deactivated", [this](auto const& signal) { handlePress(signal, false); });
    m_changed
        = m_portal->whenSignal(interface, "ShortcutsChanged", [this](auto const& signal) { handleChange(signal); });
    m_closed = m_portal->whenObjectSignals(sessionInterface, "Closed", [this](BusMessage const& signal) {
        if (m_session.empty() || signal.path != m_session)
            return;
        m_log.error("the desktop ended its shortcuts");
        m_request.end();
        m_session.clear();
        setState(State::NotBound);
    });
}

void GlobalShortcuts::createSession()
{
    m_request = m_portal->ask(interface, "CreateSession", "", {}, { { "session_handle_token", Portal::makeToken() } },
        [this](Portal::Response const& response) {
            m_session = textIn(response.results, "session_handle");
            if (response.ended == Portal::Ended::Success && m_session.starts_with('/'))
                listShortcuts();
            else
                fail("make a session", response);
        });
}

void GlobalShortcuts::listShortcuts()
{
    // A desktop that remembers the shortcut from the last time need not ask its user again.
    m_request
        = m_portal->ask(interface, "ListShortcuts", "o", { m_session }, {}, [this](Portal::Response const& response) {
              auto const listed = response.results.find("shortcuts");
              bool const isKnown = response.ended == Portal::Ended::Success && listed != response.results.end()
                  && adopt(listed->second);
              if (!isKnown)
                  bindShortcuts();
          });
}

void GlobalShortcuts::bindShortcuts()
{
    Dictionary about { { "description", m_shortcut->description } };
    if (!m_shortcut->preferredTrigger.empty())
        about["preferred_trigger"] = m_shortcut->preferredTrigger;
    // Not in braces: a list of one list in braces is that list itself to some compilers.
    List const shortcuts(1, List { m_shortcut->id, std::move(about) });
    m_request = m_portal->ask(interface, "BindShortcuts", "oa(sa{sv})s", { m_session, shortcuts, "" }, {},
        [this](Portal::Response const& response) {
            auto const bound = response.results.find("shortcuts");
            if (response.ended == Portal::Ended::Cancelled) {
                m_log.error("the user declined the shortcut");
                setState(State::Declined);
                // Nothing is asked of the desktop any more.
                m_session.clear();
                return;
            }
            // Success with an empty list is what some desktops say when they did nothing.
            bool const isBound
                = response.ended == Portal::Ended::Success && bound != response.results.end() && adopt(bound->second);
            if (!isBound)
                fail("bind the shortcut", response);
        });
}

bool GlobalShortcuts::adopt(Value const& shortcuts)
{
    auto const* const list = shortcuts.asList();
    if (!list)
        return false;
    for (auto const& entry : *list) {
        auto const* const pair = entry.asList();
        if (!pair || pair->size() != 2 || !(*pair)[0].asText() || !(*pair)[1].asDictionary()
            || *(*pair)[0].asText() != m_shortcut->id)
            continue;
        // Some desktops list what has no keys yet.
        auto const trigger = textIn(*(*pair)[1].asDictionary(), "trigger_description");
        if (trigger.empty())
            return false;
        setState(State::Bound, trigger);
        return true;
    }
    return false;
}

void GlobalShortcuts::fail(char const* step, Portal::Response const& response)
{
    auto const code = std::to_string(static_cast<int>(response.ended));
    m_log.error("the desktop did not %{public}s: %{public}s",
        { std::string(step), response.error.empty() ? "response " + code : response.error });
    setState(State::NotBound);
}

void GlobalShortcuts::endSession()
{
    m_request.end();
    m_versionQuestion = {};
    if (!m_session.empty())
        m_portal->closeObject(sessionInterface, m_session);
    m_session.clear();
}

void GlobalShortcuts::portalDidGo()
{
    m_request.end();
    m_versionQuestion = {};
    m_session.clear();
    if (m_state == State::Declined)
        return;
    m_waitsForPortal = true;
    if (m_portal->isLost())
        m_return.await();
    setState(State::Absent);
}

void GlobalShortcuts::portalDidCome()
{
    if (m_state == State::Asking) {
        // One that our own question has started answers it. After a long silence it is asked again.
        m_waitsForPortal = true;
        return;
    }
    if (m_state == State::Absent && m_waitsForPortal && m_isWanted)
        ask();
}

void GlobalShortcuts::handlePress(BusMessage const& signal, bool isDown)
{
    if (!m_isWanted || m_state != State::Bound || signal.argument(0) != Value(m_session)
        || signal.argument(1) != Value(m_shortcut->id))
        return;
    // A desktop that was locked meanwhile may have lost the release: the next press, at another time, is a new one.
    auto const time = signal.argument(2).asUInt64();
    bool const isAnotherPress = isDown && m_pressedAt && m_pressedAt != time;
    m_pressedAt = isDown ? time : std::nullopt;
    if (isAnotherPress)
        m_observer.didPress(false);
    m_observer.didPress(isDown);
}

void GlobalShortcuts::handleChange(BusMessage const& signal)
{
    if (m_session.empty() || signal.argument(0) != Value(m_session)
        || (m_state != State::Bound && m_state != State::NotBound))
        return;
    if (!adopt(signal.argument(1)))
        setState(State::NotBound);
}

void GlobalShortcuts::setState(State state, std::string trigger)
{
    if (m_state == state && m_trigger == trigger)
        return;
    m_state = state;
    m_trigger = std::move(trigger);
    m_observer.stateDidChange();
}

} // namespace backends
