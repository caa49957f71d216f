#include "backends/linux/x11/X11DropTarget.h"

#include "backends/linux/x11/DestroyWatch.h"
#include "backends/linux/x11/PropertyValues.h"
#include "backends/linux/x11/X11Pasteboard.h"
#include "platform/appkit/NSView.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace backends {

namespace {

constexpr std::uint32_t newestVersion = 5, oldestVersion = 3;
// In the flags of an answer: yes; and tell every move, not only those that leave a rectangle.
constexpr std::uint32_t flagAccepted = 1, flagEveryMove = 2;
// Programs offer a few dozen. What stands behind so many is not looked for.
constexpr std::uint32_t maximumTypes = 65536;

// A source that has gone meanwhile hears nothing.
void send(Connection& connection, xcb_window_t to, AtomName type, std::array<std::uint32_t, 5> const& words)
{
    if (to != XCB_WINDOW_NONE)
        connection.send(to, { to, type, words });
}

void sendStatus(Connection& connection, xcb_window_t window, xcb_window_t source, bool isAccepted)
{
    xcb_atom_t const action = isAccepted ? connection.atom(AtomName::XdndActionCopy) : xcb_atom_t { XCB_ATOM_NONE };
    send(connection, source, AtomName::XdndStatus,
        { window, (isAccepted ? flagAccepted : 0) | flagEveryMove, 0, 0, action });
}

// What became of it is told since version 5; before, these fields are reserved.
void sendFinished(
    Connection& connection, xcb_window_t window, xcb_window_t source, std::uint32_t version, bool isAccepted)
{
    if (version < newestVersion || !isAccepted)
        send(connection, source, AtomName::XdndFinished, { window });
    else
        send(connection, source, AtomName::XdndFinished,
            { window, flagAccepted, connection.atom(AtomName::XdndActionCopy) });
}

} // namespace

struct X11DropTarget::Drag {
    xcb_window_t source = XCB_WINDOW_NONE;
    std::uint32_t version = 0;
    std::vector<xcb_atom_t> types {};
    bool knowsTypes = true;
    // The view's answer, which it gives once a drag.
    std::optional<bool> isAccepted {};
    bool isDropped = false;
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    std::unique_ptr<DestroyWatch> watch {};
    std::unique_ptr<DroppedURLs> urls {};
};

X11DropTarget::X11DropTarget(Connection& connection, EventLoop& loop, xcb_window_t window,
    std::weak_ptr<platform::NSView> view, platform::OSLog log, platform::Seconds patience)
    : m_connection(connection)
    , m_loop(loop)
    , m_window(window)
    , m_view(std::move(view))
    , m_log(std::move(log))
    , m_patience(patience)
{
    m_registration = m_connection.windowEvents().listen(window, [this](xcb_generic_event_t const& event) {
        if ((event.response_type & 0x7F) == XCB_CLIENT_MESSAGE)
            handle(reinterpret_cast<xcb_client_message_event_t const&>(event));
    });
    xcb_change_property(m_connection.wire(), XCB_PROP_MODE_REPLACE, m_window, m_connection.atom(AtomName::XdndAware),
        XCB_ATOM_ATOM, 32, 1, &newestVersion);
}

X11DropTarget::~X11DropTarget()
{
    if (m_drag && m_drag->isDropped)
        giveUp("its target is gone");
    take();
    auto const cookie = xcb_delete_property(m_connection.wire(), m_window, m_connection.atom(AtomName::XdndAware));
    // The window may be gone already.
    m_connection.askOutcome({ cookie.sequence }, [](auto const*) {});
}

void X11DropTarget::handle(xcb_client_message_event_t const& message)
{
    if (message.format != 32)
        return;
    auto const source = message.data.data32[0];
    auto const is = [&](AtomName name) { return message.type == m_connection.atom(name); };
    if (is(AtomName::XdndEnter))
        handleEnter(message);
    else if (is(AtomName::XdndPosition))
        handlePosition(source);
    else if (is(AtomName::XdndLeave))
        handleLeave(source);
    else if (is(AtomName::XdndDrop))
        handleDrop(source, message.data.data32[2]);
}

void X11DropTarget::handleEnter(xcb_client_message_event_t const& message)
{
    auto const* const data = message.data.data32;
    auto const version = data[1] >> 24;
    if (data[0] == XCB_WINDOW_NONE || version < oldestVersion || version > newestVersion) {
        m_log.error(
            "drag refused: version %u from window %u", { std::uint64_t { version }, std::uint64_t { data[0] } });
        return;
    }
    if (m_drag && m_drag->isDropped)
        giveUp("another drag came before its data");
    take();
    m_drag = std::make_shared<Drag>();
    m_drag->source = data[0];
    m_drag->version = version;
    for (int i = 2; i < 5; ++i) {
        if (data[i] != XCB_ATOM_NONE)
            m_drag->types.push_back(data[i]);
    }
    m_drag->watch = std::make_unique<DestroyWatch>(m_connection, data[0], [this] { handleDeath(); });
    if ((data[1] & 1) != 0)
        askTypes();
}

// The source has more types than a message can hold.
void X11DropTarget::askTypes()
{
    m_drag->knowsTypes = false;
    auto const cookie = xcb_get_property(m_connection.wire(), 0, m_drag->source,
        m_connection.atom(AtomName::XdndTypeList), XCB_GET_PROPERTY_TYPE_ANY, 0, maximumTypes);
    m_connection.ask<xcb_get_property_reply_t>(cookie.sequence,
        [this, life = std::weak_ptr<bool>(m_life), asked = std::weak_ptr<Drag>(m_drag)](auto const* reply) {
            auto const drag = asked.lock();
            if (life.expired() || !drag || drag != m_drag)
                return;
            auto const types = wordsOf(reply);
            drag->types.insert(drag->types.end(), types.begin(), types.end());
            drag->knowsTypes = true;
            if (drag->isDropped)
                fetch();
        });
}

void X11DropTarget::handlePosition(xcb_window_t source)
{
    auto& connection = m_connection;
    auto const window = m_window;
    auto const drag = m_drag;
    if (!drag || drag->source != source) {
        sendStatus(connection, window, source, false);
        return;
    }
    if (!drag->isAccepted) {
        // Until the view has answered, for it may run the loop meanwhile.
        drag->isAccepted = false;
        X11DraggingInfo info(std::nullopt);
        auto const view = m_view.lock();
        drag->isAccepted = view && view->reportDraggingEntered(info) == platform::NSDragOperation::Copy;
    }
    // The view may have ended this target: nothing of it is touched any more.
    sendStatus(connection, window, source, *drag->isAccepted);
}

void X11DropTarget::handleLeave(xcb_window_t source)
{
    // Who has dropped cannot leave.
    if (m_drag && m_drag->source == source && !m_drag->isDropped)
        take();
}

void X11DropTarget::handleDrop(xcb_window_t source, xcb_timestamp_t time)
{
    if (!m_drag || m_drag->source != source) {
        logLoss("it was never dragged here");
        // Without a version to go by; a refusal looks the same in all of them.
        sendFinished(m_connection, m_window, source, oldestVersion, false);
        return;
    }
    if (m_drag->isDropped) {
        logLoss("it was dropped before, and is being read");
        return;
    }
    if (time != XCB_CURRENT_TIME)
        m_connection.noteUserTime(time);
    if (!m_drag->isAccepted.value_or(false)) {
        giveUp("it was dropped although it was not accepted");
        return;
    }
    m_drag->isDropped = true;
    m_drag->time = time;
    if (m_drag->knowsTypes)
        fetch();
}

void X11DropTarget::fetch()
{
    m_drag->urls = std::make_unique<DroppedURLs>(m_connection, m_loop, m_drag->types, m_drag->time, m_patience,
        [this](DroppedURLs::Addresses addresses, std::string const& cause) { perform(std::move(addresses), cause); });
}

void X11DropTarget::handleDeath()
{
    if (!m_drag->isDropped) {
        take();
        return;
    }
    // It may have handed over everything before it went: then its data is here before this is answered.
    m_connection.askOutcome(
        {}, [this, life = std::weak_ptr<bool>(m_life), dead = std::weak_ptr<Drag>(m_drag)](auto const*) {
            auto const drag = dead.lock();
            if (!life.expired() && drag && drag == m_drag)
                perform(std::nullopt, "its source is gone");
        });
}

void X11DropTarget::perform(DroppedURLs::Addresses addresses, std::string const& cause)
{
    auto& connection = m_connection;
    auto const window = m_window;
    if (!addresses)
        logLoss(cause);
    auto const drag = take();
    X11DraggingInfo info(std::move(addresses));
    auto const view = m_view.lock();
    if (!view)
        logLoss("its view is gone");
    bool const isAccepted = view && view->reportPerformDragOperation(info);
    // The view may have ended this target: nothing of it is touched any more.
    sendFinished(connection, window, drag->source, drag->version, isAccepted);
}

void X11DropTarget::giveUp(char const* cause)
{
    logLoss(cause);
    auto const drag = take();
    sendFinished(m_connection, m_window, drag->source, drag->version, false);
}

std::shared_ptr<X11DropTarget::Drag> X11DropTarget::take()
{
    auto drag = std::exchange(m_drag, nullptr);
    if (drag) {
        // These two call this target, and somebody further up the stack may still hold the drag.
        drag->watch = nullptr;
        drag->urls = nullptr;
    }
    return drag;
}

void X11DropTarget::logLoss(std::string const& cause) const { m_log.error("drop lost: %{public}s", { cause }); }

} // namespace backends
