#include "backends/linux/dbus/StatusWatcher.h"

#include <utility>

namespace backends {

using platform::Seconds;

namespace {

constexpr auto service = "org.kde.StatusNotifierWatcher";
constexpr auto object = "/StatusNotifierWatcher";
constexpr auto hostProperty = "IsStatusNotifierHostRegistered";

// Some take their name before they have their object. The first attempts are close to each other, so that such a one
// still has the item within a quarter of a second; then ever longer ones, and after some three seconds no more, so that
// nothing wakes up for a watcher that does not want us.
constexpr Seconds firstRetryDelay { 0.05 };
constexpr int maximumFailures = 7;

} // namespace

StatusWatcher::StatusWatcher(
    Bus& bus, EventLoop& loop, platform::OSLog log, std::string itemName, std::function<void()> stateDidChange)
    : m_bus(bus)
    , m_loop(loop)
    , m_log(std::move(log))
    , m_itemName(std::move(itemName))
    , m_stateDidChange(std::move(stateDidChange))
{
    // First of all: an item that is to be seen waits for no question. The answers tell when it went astray.
    greet();
    m_ownerChanges = bus.whenOwnerChanges(service, [this](auto const&, auto const& after) { ownerDidChange(after); });
    m_ownerQuestion = bus.askOwner(service, [this](auto const& owner) { setOwner(owner); });
    m_lost = bus.whenLost([this] { ownerDidChange({}); });
}

void StatusWatcher::greet()
{
    m_greeting = tell(service, [this](BusMessage const& answer) {
        m_greeting.reset();
        if (!answer.isError())
            m_taker = answer.sender;
        if (m_owner.empty())
            return;
        // The name may have been another's when the greeting came, or nobody's.
        if (isRegistered())
            wasTakenIn();
        else
            registerItem();
    });
}

void StatusWatcher::ownerDidChange(std::string const& owner)
{
    if (owner == m_owner)
        return;
    // It was on its way to somebody else.
    m_greeting.reset();
    m_taker.clear();
    setOwner(owner);
}

void StatusWatcher::setOwner(std::string const& owner)
{
    if (owner == m_owner)
        return;
    m_owner = owner;
    m_hasHost.reset();
    m_failures = 0;
    m_registration = {};
    m_hostChanges = {};
    m_hostQuestion.reset();
    m_retry.end();
    if (!m_owner.empty()) {
        if (!m_greeting && !isRegistered())
            registerItem();
        listenForHosts();
        askForHost();
    }
    update();
}

BusSlot StatusWatcher::tell(std::string const& keeper, Answered answered)
{
    return m_bus.callPresent(
        { keeper, object, service, "RegisterStatusNotifierItem" }, "s", { m_itemName }, std::move(answered));
}

void StatusWatcher::registerItem()
{
    // To the connection and not to the name, which may be another's by now; that one is told for itself.
    m_registration = tell(m_owner, [this](BusMessage const& answer) {
        if (answer.isError()) {
            registrationDidFail(answer.error);
            return;
        }
        m_taker = m_owner;
        wasTakenIn();
    });
}

void StatusWatcher::wasTakenIn()
{
    if (!m_hasHost && !m_hostQuestion)
        askForHost();
    update();
}

void StatusWatcher::registrationDidFail(std::string const& error)
{
    ++m_failures;
    if (m_failures == 1 || m_failures == maximumFailures)
        m_log.error("%{public}s by the desktop's list of status items: %{public}s",
            { m_failures == 1 ? "refused" : "given up after refusals", error });
    if (m_failures < maximumFailures)
        m_retry = m_loop.after(firstRetryDelay * (1 << (m_failures - 1)), [this] { registerItem(); });
}

void StatusWatcher::listenForHosts()
{
    auto const listen = [this](char const* interface, char const* name) {
        return m_bus.whenSignal({ m_owner, object, interface, name }, [this](BusMessage const& signal) {
            if (signal.sender == m_owner)
                hostsDidChange();
        });
    };
    m_hostChanges[0] = listen(service, "StatusNotifierHostRegistered");
    m_hostChanges[1] = listen(service, "StatusNotifierHostUnregistered");
    m_hostChanges[2] = listen("org.freedesktop.DBus.Properties", "PropertiesChanged");
}

void StatusWatcher::askForHost()
{
    // Who has not taken the item in may not have its object yet: what it could not answer is asked again then.
    bool const isLast = isRegistered();
    auto const answered = [this, isLast](BusMessage const& answer) {
        m_hostQuestion.reset();
        if (!answer.isError())
            m_hasHost = answer.argument(0).asBool().value_or(false);
        else if (isLast)
            m_hasHost = m_hasHost.value_or(false);
        else if (isRegistered())
            askForHost();
        update();
    };
    m_hostQuestion = m_bus.getProperty({ m_owner, object, service, hostProperty }, answered);
}

void StatusWatcher::hostsDidChange()
{
    // The signals say that one came or went, and not how many are left.
    askForHost();
    if (isRegistered() || m_failures < maximumFailures)
        return;
    m_failures = 0;
    registerItem();
}

void StatusWatcher::update()
{
    auto state = State::NoWatcher;
    if (isRegistered() && m_hasHost)
        state = *m_hasHost ? State::Shown : State::WatcherWithoutHost;
    if (std::exchange(m_state, state) == state || !m_stateDidChange)
        return;
    // A copy: it may drop this.
    auto const stateDidChange = m_stateDidChange;
    stateDidChange();
}

} // namespace backends
