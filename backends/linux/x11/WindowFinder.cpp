#include "backends/linux/x11/WindowFinder.h"

#include "backends/linux/x11/ClientProcess.h"
#include "backends/linux/x11/PropertyValues.h"

namespace backends {

namespace {

// In a question for processes (X-Resource 1.2).
constexpr xcb_window_t everyClient = XCB_NONE;

} // namespace

WindowFinder::WindowFinder(Connection& connection, Observer observer)
    : m_connection(connection)
    , m_observer(std::move(observer))
{
}

void WindowFinder::start()
{
    if (!m_connection.resources().isPresent) {
        m_connection.log().error("the X server has no resource extension: no window can be found");
        return;
    }
    m_connection.ask<xcb_res_query_client_ids_reply_t>(
        askProcess(m_connection, m_connection.ownBase()).sequence, [this](auto const* answer) {
            m_ownProcess = processIn(answer);
            if (!m_ownProcess)
                m_connection.log().error("the X server does not know our process: no window can be found");
        });
    m_connection.ask<xcb_res_query_client_ids_reply_t>(
        askProcess(m_connection, everyClient).sequence, [this](auto const* answer) {
            if (m_ownProcess && hasOtherClient(answer))
                m_observer.foundClient(*m_ownProcess);
        });
}

bool WindowFinder::hasOtherClient(xcb_res_query_client_ids_reply_t const* reply) const
{
    if (!reply)
        return false;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply); ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
        if (ids.data->spec.client == m_connection.ownBase() || xcb_res_client_id_value_value_length(ids.data) == 0)
            continue;
        if (xcb_res_client_id_value_value(ids.data)[0] == m_ownProcess)
            return true;
    }
    return false;
}

void WindowFinder::scan()
{
    auto const cookie = xcb_query_tree(m_connection.wire(), m_connection.root());
    m_connection.ask<xcb_query_tree_reply_t>(cookie.sequence, [this](auto const* reply) {
        if (!reply)
            return;
        auto const* children = xcb_query_tree_children(reply);
        for (int i = 0; i < xcb_query_tree_children_length(reply); ++i)
            examine(children[i], Origin::Existing);
    });
    // Inside frames of a window manager they are no children of the root.
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_CLIENT_LIST), [this](auto const* reply) {
            for (auto const window : wordsOf(reply))
                examine(window, Origin::Existing);
        });
}

void WindowFinder::handleCreate(xcb_create_notify_event_t const& event)
{
    if (event.parent != m_connection.root() || event.override_redirect)
        return;
    auto const base = m_connection.clientBase(event.window);
    if (base == m_connection.ownBase())
        return;
    // A connection's number is given away again only after all its windows are gone.
    if (m_observer.isKnownClient(base)) {
        m_observer.found(event.window, Origin::Made);
        return;
    }
    ask(event.window, Origin::Made);
}

void WindowFinder::examine(xcb_window_t window, Origin origin)
{
    if (m_connection.clientBase(window) == m_connection.ownBase())
        return;
    auto const cookie = xcb_get_window_attributes(m_connection.wire(), window);
    m_connection.ask<xcb_get_window_attributes_reply_t>(cookie.sequence, [this, window, origin](auto const* reply) {
        if (reply && !reply->override_redirect && reply->_class != XCB_WINDOW_CLASS_INPUT_ONLY)
            ask(window, origin);
    });
}

void WindowFinder::ask(xcb_window_t window, Origin origin)
{
    if (!m_ownProcess)
        return;
    m_connection.ask<xcb_res_query_client_ids_reply_t>(
        askProcess(m_connection, window).sequence, [this, window, origin](auto const* reply) {
            if (processIn(reply) != m_ownProcess || m_observer.isKnownWindow(window))
                return;
            m_observer.foundClient(*m_ownProcess);
            m_observer.found(window, origin);
        });
}

bool WindowFinder::isOwnTopLevel(xcb_window_t window)
{
    if (!m_ownProcess || m_connection.clientBase(window) == m_connection.ownBase())
        return false;
    auto* const wire = m_connection.wire();
    auto const processCookie = askProcess(m_connection, window);
    auto const attributesCookie = xcb_get_window_attributes(wire, window);
    auto const treeCookie = xcb_query_tree(wire, window);
    bool isOwn = false;
    m_connection.ask<xcb_res_query_client_ids_reply_t>(
        processCookie.sequence, [&](auto const* reply) { isOwn = processIn(reply) == m_ownProcess; });
    bool isOrdinary = false;
    m_connection.ask<xcb_get_window_attributes_reply_t>(attributesCookie.sequence, [&](auto const* reply) {
        isOrdinary = reply && !reply->override_redirect && reply->_class != XCB_WINDOW_CLASS_INPUT_ONLY;
    });
    bool isTopLevel = false;
    // One that is on the screen already stands in the frame of a window manager, which is another client's.
    m_connection.ask<xcb_query_tree_reply_t>(treeCookie.sequence, [&](auto const* reply) {
        isTopLevel = reply
            && (reply->parent == m_connection.root()
                || m_connection.clientBase(reply->parent) != m_connection.clientBase(window));
    });
    m_connection.roundTrip();
    return isOwn && isOrdinary && isTopLevel;
}

} // namespace backends
