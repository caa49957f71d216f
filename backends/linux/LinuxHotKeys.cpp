#include "backends/linux/LinuxHotKeys.h"

#include "backends/linux/dbus/Bus.h"
#include "backends/linux/host/AnsiLayout.h"
#include "backends/linux/host/KeySymbols.h"
#include "backends/linux/x11/X11World.h"
#include "backends/shared/HotKeyModifiers.h"

#include <utility>
#include <vector>

namespace backends {

using platform::HotKeyAvailability;
using platform::HotKeyResult;
using platform::HotKeyTruth;
using platform::ModifierKey;
using State = GlobalShortcuts::State;

namespace {

// Names of the shortcuts specification of freedesktop.org; it has none for Hyper and Meta.
char const* triggerName(ModifierKey key)
{
    switch (key) {
    case ModifierKey::Shift:
        return "SHIFT";
    case ModifierKey::Control:
        return "CTRL";
    case ModifierKey::Alt:
        return "ALT";
    case ModifierKey::Super:
        return "LOGO";
    case ModifierKey::Hyper:
    case ModifierKey::Meta:
        break;
    }
    return nullptr;
}

} // namespace

class LinuxHotKeys::Registration : public platform::EventHotKey {
public:
    Registration(std::weak_ptr<LinuxHotKeys*> owner, Handle handle)
        : m_owner(std::move(owner))
        , m_handle(handle)
    {
    }
    ~Registration() override
    {
        if (auto const owner = m_owner.lock())
            (*owner)->remove(m_handle);
    }

private:
    std::weak_ptr<LinuxHotKeys*> m_owner;
    Handle m_handle;
};

LinuxHotKeys::LinuxHotKeys(Session session, EventLoop& loop, platform::Queue& mainQueue, platform::OSLog log)
    : m_session(std::move(session))
    , m_teller(
          mainQueue, [this] { return truth(); }, [this] { reportTruthChanged(); })
    , m_life(std::make_shared<LinuxHotKeys*>(this))
{
    if (m_session.x11) {
        m_session.x11->hotKeys().setObserver({
            .didPress = [this](Handle handle, bool isDown) { didPress(handle, isDown); },
            .resultDidChange = [this] { truthMayHaveChanged(); },
        });
    }
    if (m_session.isWayland) {
        GlobalShortcuts::Observer observer {
            .stateDidChange =
                [this] {
                    updateRoads();
                    truthMayHaveChanged();
                },
            .didPress =
                [this](bool isDown) {
                    if (isDown && m_session.x11)
                        m_session.x11->userDidAct({});
                    if (!m_entries.empty() && m_entries.rbegin()->second.road == Road::Desktop)
                        didPress(m_entries.rbegin()->first, isDown);
                },
        };
        m_portal = std::make_unique<GlobalShortcuts>(
            loop, Bus::sessionAddress(), m_session.appID, std::move(log), std::move(observer));
    }
}

LinuxHotKeys::~LinuxHotKeys()
{
    if (m_session.x11)
        m_session.x11->hotKeys().setObserver({});
}

platform::EventHotKeys::Registered LinuxHotKeys::registerEventHotKey(
    std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id)
{
    if (auto const status = m_table.add({ keyCode, modifiers }, id); status != platform::noErr)
        return { status, nullptr };
    auto const handle = ++m_lastHandle;
    m_entries[handle] = { keyCode, modifiers, id };
    updateRoads();
    truthMayHaveChanged();
    return { platform::noErr, std::make_unique<Registration>(m_life, handle) };
}

void LinuxHotKeys::remove(Handle handle)
{
    auto const found = m_entries.find(handle);
    if (found == m_entries.end())
        return;
    setRoad(handle, found->second, Road::None);
    m_table.remove({ found->second.keyCode, found->second.modifiers });
    m_entries.erase(handle);
    updateRoads();
    truthMayHaveChanged();
}

void LinuxHotKeys::updateRoads()
{
    if (m_portal) {
        if (m_entries.empty())
            m_portal->release();
        else
            m_portal->bind(shortcut(m_entries.rbegin()->second));
    }
    std::vector<Handle> heldOnAnotherRoad;
    for (auto& [handle, entry] : m_entries) {
        if (setRoad(handle, entry, roadOf(handle)) && entry.isDown)
            heldOnAnotherRoad.push_back(handle);
    }
    // Nobody tells of their release on the road that they have left.
    for (auto const handle : heldOnAnotherRoad)
        didPress(handle, false);
}

LinuxHotKeys::Road LinuxHotKeys::roadOf(Handle handle) const
{
    if (m_portal && handle == m_entries.rbegin()->first) {
        if (m_portal->state() == State::Bound)
            return Road::Desktop;
        // Who has declined does not want it while a window of ours has the keyboard either.
        if (m_portal->state() == State::Declined)
            return Road::None;
    }
    return m_session.x11 ? Road::Server : Road::None;
}

bool LinuxHotKeys::setRoad(Handle handle, Entry& entry, Road road)
{
    auto const before = std::exchange(entry.road, road);
    if (before == road)
        return false;
    if (before == Road::Server)
        m_session.x11->hotKeys().remove(handle);
    if (road == Road::Server)
        m_session.x11->hotKeys().add(handle, entry.keyCode, entry.modifiers);
    return true;
}

void LinuxHotKeys::didPress(Handle handle, bool isDown)
{
    auto const found = m_entries.find(handle);
    if (found == m_entries.end() || std::exchange(found->second.isDown, isDown) == isDown)
        return;
    // The report may lead to anything, the end of the registration included.
    auto const id = found->second.id;
    if (isDown)
        reportPressed(id);
    else
        reportReleased(id);
}

GlobalShortcuts::Shortcut LinuxHotKeys::shortcut(Entry const& entry) const
{
    // Named after the combination, so that the desktop knows it again, and knows another one from it.
    auto const id = "hotkey-" + std::to_string(entry.keyCode) + "-" + std::to_string(entry.modifiers);
    return { id, m_session.description, preferredTrigger(entry) };
}

std::string LinuxHotKeys::preferredTrigger(Entry const& entry) const
{
    std::string trigger;
    for (auto const& modifier : hotKeyModifiers(m_session.modifierKeys)) {
        if (!(entry.modifiers & modifier.bit))
            continue;
        auto const* const name = triggerName(modifier.key);
        if (!name)
            return {};
        trigger += std::string(name) + "+";
    }
    // What is written on the key decides, as for every shortcut that a desktop binds.
    auto const symbol
        = m_session.x11 ? m_session.x11->keyboard().map()->symbol(entry.keyCode) : ansiKeysym(entry.keyCode);
    auto const name = symbol ? nameOfKeysym(*symbol) : std::nullopt;
    return name ? trigger + *name : std::string {};
}

HotKeyAvailability LinuxHotKeys::availability() const
{
    bool const hasServer = m_session.x11 && m_session.x11->isAlive();
    if (m_portal && m_portal->state() == State::Bound)
        return HotKeyAvailability::PortalBound;
    if (m_portal && m_portal->state() == State::Declined)
        return HotKeyAvailability::PortalDeclined;
    if (!hasServer)
        return HotKeyAvailability::Unavailable;
    return m_session.isWayland ? HotKeyAvailability::XWaylandFocusedOnly : HotKeyAvailability::X11Global;
}

HotKeyResult LinuxHotKeys::result(Handle handle) const
{
    auto const state = m_portal ? m_portal->state() : State::Absent;
    switch (state) {
    case State::Bound:
        return HotKeyResult::Active;
    case State::Declined:
        return HotKeyResult::Declined;
    case State::Asking:
        return HotKeyResult::Pending;
    case State::Unasked:
    case State::Absent:
    case State::NotBound:
        break;
    }
    if (m_session.x11)
        return m_session.x11->hotKeys().result(handle);
    return state == State::NotBound ? HotKeyResult::NotBound : HotKeyResult::Unavailable;
}

HotKeyTruth LinuxHotKeys::truth() const
{
    HotKeyTruth truth;
    truth.availability = availability();
    if (truth.availability == HotKeyAvailability::PortalBound)
        truth.trigger = m_portal->trigger();
    if (m_entries.empty())
        return truth;
    auto const& [handle, entry] = *m_entries.rbegin();
    truth.lastRegistration = result(handle);
    if (truth.lastRegistration == HotKeyResult::HeldByAnotherClient)
        truth.holder = entry.holder.value_or("");
    return truth;
}

void LinuxHotKeys::truthMayHaveChanged()
{
    m_teller.truthMayHaveChanged();
    if (m_entries.empty())
        return;
    if (truth().lastRegistration == HotKeyResult::HeldByAnotherClient)
        findHolder();
    else
        m_entries.rbegin()->second.holder.reset();
}

void LinuxHotKeys::findHolder()
{
    auto& [handle, entry] = *m_entries.rbegin();
    if (entry.holder || !m_session.findHolder)
        return;
    entry.holder = "";
    m_session.findHolder(
        entry.keyCode, entry.modifiers, [life = std::weak_ptr(m_life), asked = handle](std::string const& holder) {
            if (auto const self = life.lock())
                (*self)->didFindHolder(asked, holder);
        });
}

void LinuxHotKeys::didFindHolder(Handle handle, std::string const& holder)
{
    auto const found = m_entries.find(handle);
    if (found == m_entries.end())
        return;
    found->second.holder = holder;
    truthMayHaveChanged();
}

} // namespace backends
