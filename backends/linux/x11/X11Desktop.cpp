#include "backends/linux/x11/X11Desktop.h"

#include "backends/linux/x11/PropertyValues.h"

#include <algorithm>
#include <utility>
#include <xcb/xfixes.h>

namespace backends {

namespace {

void notify(std::function<void()> const& observer)
{
    if (observer)
        observer();
}

} // namespace

X11Desktop::X11Desktop(Connection& connection)
    : m_connection(connection)
{
}

void X11Desktop::start()
{
    if (m_connection.fixes().isPresent) {
        xcb_xfixes_select_selection_input(m_connection.wire(), m_connection.root(), m_connection.atoms().compositor(),
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    readCheckWindow();
    readSupported();
    readActiveWindow();
    readCurrentDesktop();
    readCompositor();
}

void X11Desktop::handle(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (type == XCB_PROPERTY_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        if (change.window == m_connection.root())
            handlePropertyChange(change.atom);
        return;
    }
    if (type == XCB_DESTROY_NOTIFY) {
        auto const& destroyed = reinterpret_cast<xcb_destroy_notify_event_t const&>(event);
        if (destroyed.window == m_checkWindow)
            loseWindowManager();
        return;
    }
    if (m_connection.fixes().isPresent && type == m_connection.fixes().firstEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_xfixes_selection_notify_event_t const&>(event);
        if (change.selection == m_connection.atoms().compositor())
            setCompositorOwner(change.owner);
    }
}

void X11Desktop::handlePropertyChange(xcb_atom_t property)
{
    if (property == m_connection.atom(AtomName::NET_ACTIVE_WINDOW))
        readActiveWindow();
    else if (property == m_connection.atom(AtomName::NET_SUPPORTING_WM_CHECK))
        readCheckWindow();
    else if (property == m_connection.atom(AtomName::NET_SUPPORTED))
        readSupported();
    else if (property == m_connection.atom(AtomName::NET_CURRENT_DESKTOP))
        readCurrentDesktop();
}

void X11Desktop::readCheckWindow()
{
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_SUPPORTING_WM_CHECK), [this](auto const* reply) {
            auto const words = wordsOf(reply);
            if (words.empty() || words[0] == XCB_WINDOW_NONE)
                loseWindowManager();
            else if (words[0] != m_checkWindow)
                confirmCheckWindow(words[0]);
        });
}

void X11Desktop::confirmCheckWindow(xcb_window_t window)
{
    std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection.wire(), window, XCB_CW_EVENT_MASK, &mask);
    // A window manager that died leaves the root's property behind, but its window goes.
    m_connection.askProperty(
        window, m_connection.atom(AtomName::NET_SUPPORTING_WM_CHECK), [this, window](auto const* reply) {
            auto const words = wordsOf(reply);
            if (words.empty() || words[0] != window)
                return loseWindowManager();
            m_checkWindow = window;
            // It may have told what it supports before its forerunner was gone.
            if (m_supported.empty())
                readSupported();
            notify(m_observer.windowManagerDidChange);
        });
}

void X11Desktop::loseWindowManager()
{
    if (std::exchange(m_checkWindow, XCB_WINDOW_NONE) == XCB_WINDOW_NONE)
        return;
    m_supported.clear();
    notify(m_observer.windowManagerDidChange);
}

void X11Desktop::readSupported()
{
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_SUPPORTED), [this](auto const* reply) {
            auto const words = wordsOf(reply);
            m_supported = { words.begin(), words.end() };
            notify(m_observer.activeWindowDidChange);
        });
}

void X11Desktop::readActiveWindow()
{
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_ACTIVE_WINDOW), [this](auto const* reply) {
            // There may be more than one value; the first that is a window is meant.
            auto const words = wordsOf(reply);
            auto const found = std::find_if(words.begin(), words.end(), [](auto word) { return word != 0; });
            m_activeWindow = found == words.end() ? xcb_window_t { XCB_WINDOW_NONE } : *found;
            notify(m_observer.activeWindowDidChange);
        });
}

void X11Desktop::readCurrentDesktop()
{
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_CURRENT_DESKTOP), [this](auto const* reply) {
            auto const words = wordsOf(reply);
            m_currentDesktop = words.empty() ? 0 : words[0];
            notify(m_observer.currentDesktopDidChange);
        });
}

void X11Desktop::readCompositor()
{
    auto const cookie = xcb_get_selection_owner(m_connection.wire(), m_connection.atoms().compositor());
    m_connection.ask<xcb_get_selection_owner_reply_t>(cookie.sequence,
        [this](auto const* reply) { setCompositorOwner(reply ? reply->owner : xcb_window_t { XCB_WINDOW_NONE }); });
}

void X11Desktop::setCompositorOwner(xcb_window_t owner)
{
    bool const wasCompositing = isCompositing();
    m_compositorOwner = owner;
    if (wasCompositing != isCompositing())
        notify(m_observer.compositorDidChange);
}

void X11Desktop::tellManager(xcb_window_t about, AtomName type, std::array<std::uint32_t, 5> const& words)
{
    m_connection.send(m_connection.root(), { about, type, words },
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
}

} // namespace backends
