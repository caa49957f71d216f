#include "backends/linux/x11/X11HotKeys.h"

#include "backends/linux/x11/X11Keyboard.h"
#include "backends/shared/HotKeyModifiers.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace backends {

using platform::HotKeyResult;

namespace {

// After a change of the keyboard all programs take their keys anew, and one may ask before the other has let go.
constexpr platform::Seconds retryDelays[] { platform::Seconds { 0.05 }, platform::Seconds { 0.25 },
    platform::Seconds { 1 } };

} // namespace

bool X11HotKeys::Grab::matches(xcb_keycode_t pressed, std::uint16_t state) const
{
    constexpr std::uint16_t allModifiers = 0xFF;
    return key == pressed && (state & allModifiers & ~locks) == modifiers;
}

X11HotKeys::X11HotKeys(Connection& connection, X11Keyboard& keyboard, EventLoop& loop)
    : m_connection(connection)
    , m_keyboard(keyboard)
    , m_loop(loop)
{
}

void X11HotKeys::reportPress(Handle handle, bool isDown)
{
    if (m_observer.didPress)
        m_observer.didPress(handle, isDown);
}

void X11HotKeys::reportResult()
{
    if (m_observer.resultDidChange)
        m_observer.resultDidChange();
}

void X11HotKeys::add(Handle handle, std::uint32_t virtualKeyCode, std::uint32_t modifiers)
{
    auto& entry = m_entries[handle];
    entry = { virtualKeyCode, modifiers };
    m_retries = 0;
    place(handle, entry);
}

void X11HotKeys::remove(Handle handle)
{
    auto const found = m_entries.find(handle);
    if (found == m_entries.end())
        return;
    letGo(found->second);
    m_entries.erase(found);
    if (m_held && m_held->handle == handle)
        m_held->handle.reset();
    // One of ours may have stood back for it.
    for (auto& [other, entry] : m_entries) {
        if (entry.result == HotKeyResult::HeldByThisProcess)
            place(other, entry);
    }
}

HotKeyResult X11HotKeys::result(Handle handle) const
{
    auto const found = m_entries.find(handle);
    return found == m_entries.end() ? HotKeyResult::None : found->second.result;
}

std::optional<X11HotKeys::Grab> X11HotKeys::wantedGrab(Entry const& entry, HotKeyResult& reason) const
{
    auto const map = m_keyboard.map();
    auto const modifiers = hotKeyModifiers(m_keyboard.modifierKeys());
    Grab grab;
    for (auto const& modifier : modifiers) {
        if (!(entry.modifiers & modifier.bit))
            continue;
        auto const bit = map->modifierBit(modifier.key);
        // Keys that give one bit cannot be told apart: on many keyboards Meta is where Alt is, and Hyper where Super
        // is.
        auto const sharers = std::count_if(
            modifiers.begin(), modifiers.end(), [&](auto const& other) { return map->modifierBit(other.key) == bit; });
        if (!bit || sharers > 1) {
            reason = HotKeyResult::ModifierNotOnKeyboard;
            return std::nullopt;
        }
        grab.modifiers = static_cast<std::uint8_t>(grab.modifiers | *bit);
    }
    auto const key = map->keycode(entry.virtualKeyCode);
    if (!key) {
        reason = HotKeyResult::KeyNotOnKeyboard;
        return std::nullopt;
    }
    grab.key = *key;
    grab.locks = static_cast<std::uint8_t>(map->lockBits() & ~grab.modifiers);
    return grab;
}

bool X11HotKeys::isHeldByAnotherEntry(Grab const& grab) const
{
    // The server would let one client grab a key twice, and forget both grabs with the first that is let go.
    return std::any_of(m_entries.begin(), m_entries.end(),
        [&](auto const& entry) { return entry.second.grab && entry.second.grab->conflictsWith(grab); });
}

template<typename Visit>
void X11HotKeys::forEachLockState(Grab const& grab, Visit visit)
{
    // All subsets of the lock bits, the empty one last.
    for (unsigned locks = grab.locks;; locks = (locks - 1) & grab.locks) {
        visit(static_cast<std::uint16_t>(grab.modifiers | locks));
        if (locks == 0)
            break;
    }
}

void X11HotKeys::place(Handle handle, Entry& entry)
{
    if (!m_connection.isAlive()) {
        entry.result = HotKeyResult::Unavailable;
        return;
    }
    auto const grab = wantedGrab(entry, entry.result);
    if (!grab)
        return;
    if (isHeldByAnotherEntry(*grab)) {
        entry.result = HotKeyResult::HeldByThisProcess;
        return;
    }
    entry.grab = grab;
    // A retry changes nothing until it has succeeded.
    if (entry.result != HotKeyResult::HeldByAnotherClient)
        entry.result = HotKeyResult::Pending;
    entry.attempt = ++m_attempts;
    std::vector<unsigned> sequences;
    forEachLockState(*grab, [&](std::uint16_t modifiers) {
        // Without the window below taking part: whatever has the keyboard must not see the key.
        sequences.push_back(xcb_grab_key(
            m_connection.wire(), 0, m_connection.root(), modifiers, grab->key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)
                                .sequence);
    });
    m_connection.askOutcome(sequences,
        [this, handle, attempt = entry.attempt](auto const* error) { answered(handle, attempt, error != nullptr); });
}

void X11HotKeys::letGo(Entry& entry)
{
    if (!entry.grab)
        return;
    if (m_connection.isAlive()) {
        forEachLockState(*entry.grab, [&](std::uint16_t modifiers) {
            xcb_ungrab_key(m_connection.wire(), entry.grab->key, m_connection.root(), modifiers);
        });
    }
    entry.grab.reset();
}

void X11HotKeys::answered(Handle handle, std::uint32_t attempt, bool isRefused)
{
    auto const found = m_entries.find(handle);
    if (found == m_entries.end() || found->second.attempt != attempt || !found->second.grab)
        return;
    if (isRefused) {
        // With some locks it may have been granted. A shortcut that works now and then is worse than none.
        letGo(found->second);
        if (!std::exchange(found->second.isRefusalLogged, true)) {
            m_connection.log().error("hot key not registered: another client has grabbed key code %{public}u with "
                                     "modifiers %{public}u",
                { std::uint64_t { found->second.virtualKeyCode }, std::uint64_t { found->second.modifiers } });
        }
        found->second.result = HotKeyResult::HeldByAnotherClient;
        retryLater();
    } else {
        found->second.result = HotKeyResult::Active;
        found->second.isRefusalLogged = false;
    }
    reportResult();
}

void X11HotKeys::keyboardDidChange()
{
    // All that move are let go first: keys may have changed places among themselves.
    for (auto& [handle, entry] : m_entries) {
        HotKeyResult reason {};
        if (entry.grab && wantedGrab(entry, reason) != entry.grab)
            letGo(entry);
    }
    tryAgain();
}

void X11HotKeys::tryAgain()
{
    m_retries = 0;
    placeMissing();
}

void X11HotKeys::somebodyMayHaveGone()
{
    bool const isAnyRefused = std::any_of(m_entries.begin(), m_entries.end(),
        [](auto const& entry) { return entry.second.result == HotKeyResult::HeldByAnotherClient; });
    if (!isAnyRefused || m_isRetrying)
        return;
    // One try is enough: the server tells of the end of a client's windows when it lets its grabs go.
    m_retries = std::size(retryDelays) - 1;
    retryLater();
}

void X11HotKeys::placeMissing()
{
    for (auto& [handle, entry] : m_entries) {
        if (!entry.grab)
            place(handle, entry);
    }
    reportResult();
}

void X11HotKeys::retryLater()
{
    if (m_isRetrying || m_retries == std::size(retryDelays))
        return;
    m_isRetrying = true;
    m_retry = m_loop.after(retryDelays[m_retries++], [this] {
        m_isRetrying = false;
        placeMissing();
    });
}

void X11HotKeys::connectionWasLost()
{
    m_retry.end();
    for (auto& [handle, entry] : m_entries) {
        entry.grab.reset();
        entry.result = HotKeyResult::Unavailable;
    }
    if (auto const held = std::exchange(m_held, std::nullopt); held && held->handle)
        reportPress(*held->handle, false);
    reportResult();
}

bool X11HotKeys::handle(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return false;
    auto const& key = reinterpret_cast<xcb_key_press_event_t const&>(event);
    if (key.event != m_connection.root())
        return false;
    return type == XCB_KEY_PRESS ? handlePress(key) : handleRelease(key);
}

bool X11HotKeys::handlePress(xcb_key_press_event_t const& event)
{
    if (m_held) {
        bool const isSameKey = m_held->key == event.detail;
        // While a combination is down the keyboard is grabbed, and the other keys come here too.
        if (!isSameKey && !m_held->releasedAt)
            return true;
        // A repetition, alone or as the second half of a pair: both halves have one time.
        if (isSameKey && (!m_held->releasedAt || *m_held->releasedAt == event.time)) {
            m_held->releasedAt.reset();
            return true;
        }
        finishRelease(*m_held->releasedAt);
    }
    auto const pressed = std::find_if(m_entries.begin(), m_entries.end(),
        [&](auto const& entry) { return entry.second.grab && entry.second.grab->matches(event.detail, event.state); });
    if (pressed == m_entries.end())
        return false;
    m_connection.noteUserTime(event.time);
    m_held = Held { pressed->first, event.detail };
    reportPress(pressed->first, true);
    return true;
}

bool X11HotKeys::handleRelease(xcb_key_release_event_t const& event)
{
    if (!m_held)
        return false;
    if (m_held->key != event.detail)
        return true;
    m_connection.noteUserTime(event.time);
    m_held->releasedAt = event.time;
    if (m_keyboard.tellsRepetitions()) {
        finishRelease(event.time);
        return true;
    }
    // Otherwise the press that makes it a repetition was sent in the same breath: it is here before the answer to
    // anything that is asked now.
    auto const cookie = xcb_get_input_focus(m_connection.wire());
    m_connection.ask<xcb_get_input_focus_reply_t>(
        cookie.sequence, [this, time = event.time](auto const*) { finishRelease(time); });
    return true;
}

void X11HotKeys::finishRelease(xcb_timestamp_t time)
{
    if (!m_held || m_held->releasedAt != time)
        return;
    auto const handle = m_held->handle;
    m_held.reset();
    if (handle)
        reportPress(*handle, false);
}

} // namespace backends
