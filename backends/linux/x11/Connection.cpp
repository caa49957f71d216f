#include "backends/linux/x11/Connection.h"

#include "backends/linux/x11/RequestNames.h"
#include "backends/linux/x11/Xkb.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <poll.h>
#include <utility>
#include <xcb/bigreq.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace backends {

using platform::NSError;

namespace {

// Enough for a burst; a flood lets the host have its turn in between.
constexpr int maximumEventsInOneTurn = 256;
// In units of four bytes: all that a property can have.
constexpr std::uint32_t wholeProperty = 0x1FFFFFFF;

bool isLaterThan(std::uint32_t sequence, std::uint32_t other)
{
    return static_cast<std::int32_t>(sequence - other) > 0;
}

} // namespace

platform::Result<std::unique_ptr<Connection>> Connection::open(
    std::optional<std::string> const& display, EventLoop& loop, platform::OSLog log)
{
    int screenNumber = 0;
    auto* const wire = xcb_connect(display ? display->c_str() : nullptr, &screenNumber);
    if (int const failure = xcb_connection_has_error(wire); failure != 0) {
        xcb_disconnect(wire);
        return NSError { "X11", failure, "cannot connect to display \"" + display.value_or("$DISPLAY") + "\"" };
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(wire));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    int const descriptor = xcb_get_file_descriptor(wire);
    fcntl(descriptor, F_SETFD, fcntl(descriptor, F_GETFD) | FD_CLOEXEC);
    auto opened = std::unique_ptr<Connection>(new Connection(wire, screens.data, screenNumber, loop, std::move(log)));
    opened->m_display = display;
    return opened;
}

Connection::Connection(
    xcb_connection_t* connection, xcb_screen_t* screen, int screenNumber, EventLoop& loop, platform::OSLog log)
    : m_connection(connection)
    , m_screen(screen)
    , m_loop(loop)
    , m_log(std::move(log))
    , m_resourceBase(xcb_get_setup(connection)->resource_id_base)
    , m_resourceMask(xcb_get_setup(connection)->resource_id_mask)
{
    for (auto* extension : { &xcb_big_requests_id, &xcb_randr_id, &xcb_shape_id, &xcb_input_id, &xcb_xfixes_id,
             &xcb_res_id, &xcb_xkb_id, &xcb_render_id })
        xcb_prefetch_extension_data(connection, extension);
    m_atoms = Atoms::intern(connection, screenNumber);
    // Asked when it is needed, this would wait for an answer.
    xcb_prefetch_maximum_request_length(connection);
    queryExtensions();
}

Connection::~Connection()
{
    m_source.end();
    xcb_disconnect(m_connection);
}

void Connection::queryExtensions()
{
    auto const query = [this](xcb_extension_t& id) -> Extension {
        auto const* data = xcb_get_extension_data(m_connection, &id);
        if (!data || !data->present)
            return {};
        return { true, data->first_event, data->major_opcode };
    };
    m_randr = query(xcb_randr_id);
    m_shape = query(xcb_shape_id);
    m_input = query(xcb_input_id);
    m_fixes = query(xcb_xfixes_id);
    m_resources = query(xcb_res_id);
    m_keyboard = query(xcb_xkb_id);
    m_render = query(xcb_render_id);
    // The server serves an extension in the version that its client named; the answers themselves tell nothing new.
    std::vector<unsigned> answers;
    if (m_randr.isPresent)
        answers.push_back(xcb_randr_query_version(m_connection, 1, 5).sequence);
    if (m_input.isPresent)
        answers.push_back(xcb_input_xi_query_version(m_connection, 2, 2).sequence);
    if (m_fixes.isPresent)
        answers.push_back(xcb_xfixes_query_version(m_connection, 2, 0).sequence);
    if (m_resources.isPresent)
        answers.push_back(xcb_res_query_version(m_connection, 1, 2).sequence);
    if (m_keyboard.isPresent)
        answers.push_back(xcb_xkb_use_extension(m_connection, 1, 0).sequence);
    if (m_render.isPresent)
        answers.push_back(xcb_render_query_version(m_connection, 0, 11).sequence);
    for (auto const sequence : answers)
        xcb_discard_reply(m_connection, sequence);
}

void Connection::start(std::function<void(xcb_generic_event_t const&)> handleEvent, std::function<void()> lost)
{
    m_handleEvent = std::move(handleEvent);
    m_lost = std::move(lost);
    m_source = m_loop.whenReadable(xcb_get_file_descriptor(m_connection), [this] { handleQueued(true); });
    m_loop.atEndOfTurn([this] { return finishTurn(); });
    // What came while start-up waited is queued already and makes nothing readable.
    m_needsFlush = true;
    m_loop.wakeUp();
}

xcb_connection_t* Connection::wire()
{
    if (!std::exchange(m_needsFlush, true))
        m_loop.wakeUp();
    return m_connection;
}

void Connection::expect(std::uint32_t sequence, std::function<void(void*)> handle)
{
    if (m_isLost)
        return;
    m_expected.push_back({ sequence, std::move(handle), {}, {} });
}

void Connection::askProperty(
    xcb_window_t window, xcb_atom_t property, std::function<void(xcb_get_property_reply_t const*)> continuation)
{
    auto const cookie = xcb_get_property(wire(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty);
    ask<xcb_get_property_reply_t>(cookie.sequence, std::move(continuation));
}

void Connection::send(xcb_window_t to, Message const& message, std::uint32_t mask)
{
    xcb_client_message_event_t event {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = message.about;
    event.type = atom(message.type);
    std::copy(message.words.begin(), message.words.end(), event.data.data32);
    xcb_send_event(wire(), 0, to, mask, reinterpret_cast<char const*>(&event));
}

void Connection::askOutcome(
    std::vector<unsigned> const& sequences, std::function<void(xcb_generic_error_t const*)> continuation)
{
    auto const firstError = std::make_shared<std::optional<xcb_generic_error_t>>();
    for (auto const sequence : sequences) {
        m_errorHandlers[sequence] = [firstError](xcb_generic_error_t const& error) {
            if (!*firstError)
                *firstError = error;
        };
    }
    // The server answers in order: when this reply is there, every error is.
    auto const cookie = xcb_get_input_focus(wire());
    ask<xcb_get_input_focus_reply_t>(
        cookie.sequence, [this, sequences, firstError, continuation = std::move(continuation)](auto const*) {
            for (auto const sequence : sequences)
                m_errorHandlers.erase(sequence);
            continuation(*firstError ? &**firstError : nullptr);
        });
}

void Connection::roundTrip()
{
    if (m_isLost)
        return;
    XHandle<xcb_get_input_focus_reply_t> const echo(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    // In the order of the wire, as always: what came before the answers happened before them.
    while (handleQueued(false)) { }
}

void Connection::roundTripWithin(std::chrono::milliseconds longest)
{
    using Clock = std::chrono::steady_clock;
    auto const end = Clock::now() + longest;
    // The answer may come when this has returned.
    auto const hasAnswered = std::make_shared<bool>(false);
    ask<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(m_connection).sequence, [hasAnswered](auto const*) { *hasAnswered = true; });
    xcb_flush(m_connection);
    while (!*hasAnswered && !m_isLost) {
        if (handleQueued(true))
            continue;
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd wait { xcb_get_file_descriptor(m_connection), POLLIN, 0 };
        if (left <= 0 || poll(&wait, 1, static_cast<int>(left)) == 0)
            return;
    }
}

bool Connection::handleQueued(bool readsWire)
{
    bool isBusy = false;
    for (int i = 0; i < maximumEventsInOneTurn && !m_isLost; ++i) {
        if (!m_nextEvent)
            m_nextEvent.reset(readsWire ? xcb_poll_for_event(m_connection) : xcb_poll_for_queued_event(m_connection));
        // Replies to requests that the server had read before this event happened come first.
        if (isReplyNext() && pollForReply() && isReplyNext()) {
            handleReply();
            isBusy = true;
            continue;
        }
        if (!m_nextEvent)
            break;
        // Out of reach first: the handler may wait for an answer, and lead back here.
        auto const event = std::move(m_nextEvent);
        handleEvent(*event);
        isBusy = true;
    }
    checkAlive();
    return isBusy;
}

bool Connection::isReplyNext() const
{
    return !m_expected.empty()
        && (!m_nextEvent || !isLaterThan(m_expected.front().sequence, m_nextEvent->full_sequence));
}

bool Connection::pollForReply()
{
    auto& next = m_expected.front();
    if (next.reply || next.error)
        return true;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (!xcb_poll_for_reply(m_connection, next.sequence, &reply, &error))
        error = nullptr;
    next.reply.reset(reply);
    next.error.reset(error);
    // To look for a reply reads the wire too: events that happened before the reply may have come with it.
    if (!m_nextEvent)
        m_nextEvent.reset(xcb_poll_for_queued_event(m_connection));
    return next.reply || next.error;
}

void Connection::handleReply()
{
    auto const expectation = std::move(m_expected.front());
    m_expected.pop_front();
    if (expectation.error)
        logXError(m_log, *expectation.error);
    expectation.handle(expectation.reply.get());
}

void Connection::handleEvent(xcb_generic_event_t const& event)
{
    if (event.response_type == 0) {
        auto const& error = reinterpret_cast<xcb_generic_error_t const&>(event);
        auto const handler = m_errorHandlers.find(error.full_sequence);
        if (handler != m_errorHandlers.end())
            handler->second(error);
        else
            logXError(m_log, error);
        return;
    }
    m_windowEvents.handle(event);
    m_handleEvent(event);
}

bool Connection::finishTurn()
{
    if (m_isLost)
        return false;
    if (std::exchange(m_needsFlush, false))
        xcb_flush(m_connection);
    // Writing reads too: what came meanwhile is queued and would make no descriptor readable.
    return handleQueued(false);
}

void Connection::checkAlive()
{
    if (m_isLost || xcb_connection_has_error(m_connection) == 0)
        return;
    m_isLost = true;
    m_source.end();
    m_expected.clear();
    m_errorHandlers.clear();
    m_log.error("connection to the X server lost: %{public}s",
        { std::string(nameOfConnectionError(xcb_connection_has_error(m_connection))) });
    auto const lost = std::exchange(m_lost, nullptr);
    if (lost)
        lost();
}

} // namespace backends
