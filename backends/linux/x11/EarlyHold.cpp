#include "backends/linux/x11/EarlyHold.h"

#include "backends/linux/loop/BackgroundThread.h"
#include "backends/linux/x11/ClientProcess.h"
#include "backends/linux/x11/PropertyValues.h"
#include "backends/linux/x11/Unseen.h"

#include <algorithm>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/res.h>

namespace backends {

namespace {

// A host that does not turn its loop for so long is busy with something else, and what it shows meanwhile is its
// affair.
constexpr std::chrono::milliseconds longestHold { 1000 };

} // namespace

EarlyHold::EarlyHold(Connection& connection)
    : m_connection(connection)
{
}

EarlyHold::~EarlyHold()
{
    if (m_thread.joinable()) {
        eventfd_write(m_stop, 1);
        // It may be waiting for the answer of a server that stands still.
        shutdown(xcb_get_file_descriptor(m_wire), SHUT_RDWR);
        m_thread.join();
    }
    if (m_stop >= 0)
        close(m_stop);
    if (m_wire)
        xcb_disconnect(m_wire);
}

void EarlyHold::start(std::uint32_t ownProcess)
{
    if (m_wire)
        return;
    // Here and not on the thread: finding the server reads the environment, which the host may be writing.
    m_wire = xcb_connect(m_connection.display() ? m_connection.display()->c_str() : nullptr, nullptr);
    m_stop = eventfd(0, EFD_CLOEXEC);
    if (xcb_connection_has_error(m_wire) || m_stop < 0)
        return;
    m_ownProcess = ownProcess;
    m_shape = m_connection.shape();
    m_root = m_connection.root();
    m_opacity = m_connection.atom(AtomName::NET_WM_WINDOW_OPACITY);
    m_compositor = m_connection.atoms().compositor();
    xcb_prefetch_extension_data(m_wire, &xcb_res_id);
    xcb_prefetch_extension_data(m_wire, &xcb_shape_id);
    std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_wire, m_root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_wire);
    m_thread = startBackgroundThread("paneweld-hold", [this] { run(); });
}

std::optional<EarlyHold::Held> EarlyHold::take(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    auto& entry = m_windows[window];
    return std::exchange(entry.held, std::nullopt);
}

std::optional<std::uint32_t> EarlyHold::takeOwnOpacity(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    if (found == m_windows.end())
        return std::nullopt;
    found->second.isShown = true;
    return std::exchange(found->second.ownOpacity, std::nullopt);
}

void EarlyHold::forget(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    m_windows.erase(window);
}

void EarlyHold::run()
{
    xcb_discard_reply(m_wire, xcb_res_query_version(m_wire, 1, 2).sequence);
    pollfd waits[] = { { xcb_get_file_descriptor(m_wire), POLLIN, 0 }, { m_stop, POLLIN, 0 } };
    while (!xcb_connection_has_error(m_wire)) {
        // What came with a reply is here already and wakes nobody.
        handleEvents();
        giveBackLate();
        poll(waits, 2, millisecondsToWait());
        if (waits[1].revents != 0)
            return;
    }
}

void EarlyHold::handleEvents()
{
    while (XHandle<xcb_generic_event_t> const event { xcb_poll_for_event(m_wire) }) {
        auto const type = event->response_type & 0x7F;
        if (type == XCB_CREATE_NOTIFY) {
            handleCreate(reinterpret_cast<xcb_create_notify_event_t const&>(*event));
        } else if (auto const window = unshapedWindow(*event, m_shape); window != XCB_WINDOW_NONE) {
            holdAgain(window);
        } else if (type == XCB_PROPERTY_NOTIFY) {
            handleProperty(reinterpret_cast<xcb_property_notify_event_t const&>(*event));
        } else if (type == XCB_DESTROY_NOTIFY) {
            auto const gone = reinterpret_cast<xcb_destroy_notify_event_t const&>(*event).window;
            m_ours.erase(gone);
            std::lock_guard const lock(m_mutex);
            // One that was taken is forgotten by whoever took it, who may not have heard of this yet.
            auto const found = m_windows.find(gone);
            if (found != m_windows.end() && found->second.held)
                m_windows.erase(found);
        } else if (type == XCB_REPARENT_NOTIFY) {
            m_ours.erase(reinterpret_cast<xcb_reparent_notify_event_t const&>(*event).window);
        }
    }
}

void EarlyHold::handleCreate(xcb_create_notify_event_t const& event)
{
    if (event.parent != m_root || event.override_redirect
        || m_connection.clientBase(event.window) == m_connection.ownBase())
        return;
    // Each answer that is waited for is time in which a window manager may map the window.
    bool const isKnown = isOfKnownClient(event.window);
    std::optional<xcb_get_property_cookie_t> opacity;
    if (isKnown)
        opacity = hold(event.window);
    auto const compositor = xcb_get_selection_owner(m_wire, m_compositor);
    if (!isKnown) {
        if (!isOurs(event.window)) {
            xcb_discard_reply(m_wire, compositor.sequence);
            return;
        }
        opacity = hold(event.window);
    }
    m_ours.insert(event.window);
    XHandle<xcb_get_selection_owner_reply_t> const owner(xcb_get_selection_owner_reply(m_wire, compositor, nullptr));
    if (!owner || owner->owner == XCB_WINDOW_NONE)
        holdWithoutCompositor(event.window);
    if (opacity)
        keepOwnOpacity(event.window, *opacity);
}

bool EarlyHold::isOfKnownClient(xcb_window_t window) const
{
    // A client's number is given away again only after all its windows are gone.
    auto const base = m_connection.clientBase(window);
    return std::any_of(m_ours.begin(), m_ours.end(), [&](auto ours) { return m_connection.clientBase(ours) == base; });
}

bool EarlyHold::isOurs(xcb_window_t window)
{
    XHandle<xcb_res_query_client_ids_reply_t> const reply(
        xcb_res_query_client_ids_reply(m_wire, askProcess(m_wire, window), nullptr));
    return processIn(reply.get()) == m_ownProcess;
}

std::optional<xcb_get_property_cookie_t> EarlyHold::hold(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    // The main thread was faster.
    if (m_windows.contains(window))
        return std::nullopt;
    std::uint32_t const mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_wire, window, XCB_CW_EVENT_MASK, &mask);
    auto const question = askOpacity(window);
    writeOpacity(m_wire, window, m_opacity, 0);
    xcb_flush(m_wire);
    m_windows[window] = { Held {}, Clock::now() + longestHold };
    return question;
}

void EarlyHold::keepOwnOpacity(xcb_window_t window, xcb_get_property_cookie_t question)
{
    XHandle<xcb_get_property_reply_t> const reply(xcb_get_property_reply(m_wire, question, nullptr));
    auto const opacity = firstWordOf(reply.get());
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    if (!opacity || found == m_windows.end())
        return;
    found->second.ownOpacity = opacity;
    // The main thread hears of it like of a wish that comes now.
    if (found->second.isShown)
        writeOpacity(m_wire, window, m_opacity, *opacity);
    xcb_flush(m_wire);
}

// Toolkits write the opacity that somebody wished for right after they have made a window, over the hold.
void EarlyHold::handleProperty(xcb_property_notify_event_t const& event)
{
    auto const window = event.window;
    if (!isHeld(window)) {
        std::uint32_t const mask = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(m_wire, window, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_wire);
        return;
    }
    if (event.atom != m_opacity)
        return;
    XHandle<xcb_get_property_reply_t> const reply(xcb_get_property_reply(m_wire, askOpacity(window), nullptr));
    auto const opacity = reply ? firstWordOf(reply.get()).value_or(opaque) : 0;
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    if (opacity == 0 || found == m_windows.end() || !found->second.held)
        return;
    found->second.ownOpacity = opacity;
    writeOpacity(m_wire, window, m_opacity, 0);
    xcb_flush(m_wire);
}

bool EarlyHold::isHeld(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    return found != m_windows.end() && found->second.held;
}

xcb_get_property_cookie_t EarlyHold::askOpacity(xcb_window_t window)
{
    return xcb_get_property(m_wire, false, window, m_opacity, XCB_ATOM_CARDINAL, 0, 1);
}

void EarlyHold::holdWithoutCompositor(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    if (!m_shape.isPresent || found == m_windows.end() || !found->second.held)
        return;
    writeShape(m_wire, window, true);
    xcb_flush(m_wire);
    found->second.held->hasEmptyShape = true;
}

void EarlyHold::holdAgain(xcb_window_t window)
{
    std::lock_guard const lock(m_mutex);
    auto const found = m_windows.find(window);
    if (found == m_windows.end() || !found->second.held || !found->second.held->hasEmptyShape)
        return;
    writeShape(m_wire, window, true);
    xcb_flush(m_wire);
}

void EarlyHold::giveBack(xcb_window_t window, Entry const& entry)
{
    writeOpacity(m_wire, window, m_opacity, entry.ownOpacity.value_or(opaque));
    if (entry.held->hasEmptyShape)
        writeShape(m_wire, window, false);
}

void EarlyHold::giveBackLate()
{
    std::lock_guard const lock(m_mutex);
    auto const now = Clock::now();
    // Nothing of it is kept: the end of a window inside a frame is not heard here.
    std::erase_if(m_windows, [&](auto const& known) {
        auto const& entry = known.second;
        if (!entry.held || entry.end > now)
            return false;
        giveBack(known.first, entry);
        return true;
    });
    xcb_flush(m_wire);
}

int EarlyHold::millisecondsToWait()
{
    std::lock_guard const lock(m_mutex);
    std::optional<Clock::time_point> next;
    for (auto const& [window, entry] : m_windows) {
        if (entry.held && (!next || entry.end < *next))
            next = entry.end;
    }
    if (!next)
        return -1;
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left, 0));
}

} // namespace backends
