#include "backends/linux/x11/WindowFrame.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/X11Desktop.h"
#include "backends/linux/x11/X11Screen.h"

#include <algorithm>
#include <utility>

namespace backends {

using platform::Rect;
using platform::Seconds;

namespace {

// Window managers answer within some milliseconds; after this the window's real frame is the answer.
constexpr Seconds longestAnswer { 0.25 };

// Requests that somebody may still be at, when they come without an end.
constexpr std::size_t mostRecent = 256;

// The words of _NET_MOVERESIZE_WINDOW: gravity static (the rectangle is the client's own), all four sides given, and
// the source is a pager, which window managers follow without ideas of their own.
constexpr std::uint32_t moveResizeFlags = 10u | 0xFu << 8 | 2u << 12;

} // namespace

WindowFrame::WindowFrame(X11Context const& context, xcb_window_t window, WindowLimits& limits)
    : m_context(context)
    , m_window(window)
    , m_limits(limits)
    , m_parent(context.connection.root())
{
}

Rect WindowFrame::frame() const
{
    // The target is the more precise number when the window is where it was sent.
    if (m_target && (m_answerTimer || isAtTarget()))
        return *m_target;
    return m_context.screen.scale().toPoints(visiblePixels());
}

void WindowFrame::setFrame(Rect const& frame, std::optional<Rect> const& end)
{
    auto const& scale = m_context.screen.scale();
    m_target = frame;
    m_targetPixels = end ? scale.toPixels(frame, scale.toPixels(*end)) : scale.toPixels(frame);
    m_kept = m_targetPixels;
    m_isUsersSize = false;
    request(grownBy(m_targetPixels, m_insets));
}

void WindowFrame::request(PixelRect const& client)
{
    if (client == (m_answerTimer ? m_requested : m_pixels))
        return;
    m_limits.include(m_pixels, client);
    send(client);
}

void WindowFrame::send(PixelRect const& client)
{
    m_requested = client;
    if (m_recent.size() == mostRecent)
        m_recent.erase(m_recent.begin());
    m_recent.push_back(client);
    auto& connection = m_context.connection;
    auto const x = static_cast<std::uint32_t>(client.x);
    auto const y = static_cast<std::uint32_t>(client.y);
    auto const width = static_cast<std::uint32_t>(client.width);
    auto const height = static_cast<std::uint32_t>(client.height);
    bool const isMapped = m_mapping == Mapping::Mapped;
    if (isMapped && m_context.desktop.supports(AtomName::NET_MOVERESIZE_WINDOW)) {
        m_context.desktop.tellManager(
            m_window, AtomName::NET_MOVERESIZE_WINDOW, { moveResizeFlags, x, y, width, height });
    } else {
        std::uint32_t const values[] = { x, y, width, height };
        xcb_configure_window(connection.wire(), m_window,
            XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    }
    if (!isMapped)
        m_limits.placeBeforeMapping(client);
    waitForAnswer();
}

void WindowFrame::setMapping(Mapping mapping)
{
    m_mapping = mapping;
    m_wasAnswered = false;
    if (mapping == Mapping::Unmapped)
        handleParent(m_context.connection.root());
}

void WindowFrame::sendAgain()
{
    if (!m_target || isAtTarget())
        return;
    auto const client = grownBy(m_targetPixels, m_insets);
    // A window manager that has just mapped the window may believe that it is there already, and then does nothing at
    // all. A detour of a pixel makes it look.
    if (!m_wasAnswered && m_requested == client) {
        auto detour = client;
        ++detour.x;
        send(detour);
        send(client);
        m_detour = detour;
        return;
    }
    send(client);
}

void WindowFrame::setInsets(PixelInsets const& insets)
{
    if (std::exchange(m_insets, insets) == insets)
        return;
    m_limits.setInsets(insets);
    if (m_answerTimer)
        request(grownBy(m_targetPixels, m_insets));
}

void WindowFrame::renewLimits()
{
    if (m_limits.isSet())
        m_limits.include(m_pixels, m_answerTimer ? m_requested : m_pixels);
}

void WindowFrame::keepPoints(PixelScale const& before, std::optional<Rect> const& end)
{
    if (!m_target)
        return;
    auto const points = end ? *end : m_isUsersSize ? before.toPoints(m_kept) : *m_target;
    auto const place = m_context.screen.scale().toPoints(end ? before.toPixels(*end) : m_kept);
    setFrame({ place.midX() - points.width / 2, place.y, points.width, points.height });
}

void WindowFrame::keepUsersSize()
{
    m_kept = visiblePixels();
    m_isUsersSize = true;
}

void WindowFrame::keepOthersPlace()
{
    if (m_answerTimer || m_isParentAhead || isAtTarget())
        return;
    m_targetPixels = m_kept = visiblePixels();
    m_target = m_context.screen.scale().toPoints(m_targetPixels);
}

void WindowFrame::read()
{
    auto& connection = m_context.connection;
    auto const cookie = xcb_get_geometry(connection.wire(), m_window);
    connection.ask<xcb_get_geometry_reply_t>(cookie.sequence, [this, weak = m_owner](auto const* reply) {
        auto const owner = weak.lock();
        if (!owner || !reply)
            return;
        m_pixels.width = reply->width;
        m_pixels.height = reply->height;
    });
    // It may have been given a frame before anybody here listened.
    auto const tree = xcb_query_tree(connection.wire(), m_window);
    connection.ask<xcb_query_tree_reply_t>(tree.sequence, [this, weak = m_owner](auto const* reply) {
        auto const owner = weak.lock();
        if (owner && reply && reply->parent != m_parent)
            handleParent(reply->parent);
    });
    askPosition();
}

void WindowFrame::handleParent(xcb_window_t parent)
{
    m_parent = parent;
    m_parentSize.reset();
    m_isParentAhead = false;
}

void WindowFrame::handleParentConfigure(xcb_configure_notify_event_t const& event)
{
    if (event.window != m_parent || m_mapping != Mapping::Mapped)
        return;
    PixelRect const size { 0, 0, event.width, event.height };
    if (std::exchange(m_parentSize, size) != size)
        m_isParentAhead = true;
    askPosition();
}

bool WindowFrame::handleConfigure(xcb_configure_notify_event_t const& event)
{
    m_wasAnswered = true;
    m_isParentAhead = false;
    bool const isSynthetic = (event.response_type & 0x80) != 0;
    PixelRect const told { event.x, event.y, event.width, event.height };
    bool const sizeChanges = !told.hasSizeOf(m_pixels);
    bool const isAnswer = sizeChanges && wasRequested(told);
    bool const isForeign = !isSynthetic && sizeChanges && !isAnswer;
    // A busy window manager that is still at earlier requests comes to the last one too.
    if (isAnswer && !told.hasSizeOf(m_requested))
        m_isCatchingUp = true;
    // A window manager tells the place on the root itself. The server tells the place in the parent, which may be a
    // frame by now, so the place on the root is asked for.
    if (isSynthetic) {
        setPixels(told);
    } else {
        m_pixels.width = told.width;
        m_pixels.height = told.height;
        askPosition();
    }
    return isForeign;
}

bool WindowFrame::wasRequested(PixelRect const& size) const
{
    return std::any_of(m_recent.begin(), m_recent.end(), [&](auto const& rect) { return rect.hasSizeOf(size); });
}

void WindowFrame::askPosition(std::function<void()> done)
{
    auto& connection = m_context.connection;
    auto const cookie = xcb_translate_coordinates(connection.wire(), m_window, connection.root(), 0, 0);
    connection.ask<xcb_translate_coordinates_reply_t>(
        cookie.sequence, [this, weak = m_owner, done = std::move(done)](auto const* reply) {
            auto const owner = weak.lock();
            if (!owner || !reply)
                return;
            setPixels({ reply->dst_x, reply->dst_y, m_pixels.width, m_pixels.height });
            if (done)
                done();
        });
}

void WindowFrame::askWhetherFramed(std::function<void(bool)> answered)
{
    if (m_parent == m_context.connection.root())
        return answered(false);
    auto const cookie = xcb_get_geometry(m_context.connection.wire(), m_parent);
    m_context.connection.ask<xcb_get_geometry_reply_t>(
        cookie.sequence, [this, weak = m_owner, answered = std::move(answered)](auto const* reply) {
            if (auto const owner = weak.lock())
                answered(reply && (reply->width > m_pixels.width || reply->height > m_pixels.height));
        });
}

void WindowFrame::setPixels(PixelRect const& pixels)
{
    m_pixels = pixels;
    if (auto const visible = visiblePixels(); visible.hasSizeOf(m_kept) && !m_isParentAhead)
        m_kept = visible;
    // A detour that is still to come would be seen: the target counts when the detour is behind it.
    if (m_detour == pixels)
        m_detour.reset();
    if (m_hasArrived || m_detour || m_pixels != m_requested)
        return;
    m_hasArrived = true;
    m_didSettle();
}

void WindowFrame::waitForAnswer()
{
    m_wasAnswered = false;
    m_hasArrived = false;
    m_detour.reset();
    startAnswerTimer();
}

void WindowFrame::startAnswerTimer()
{
    m_isCatchingUp = false;
    m_answerTimer = m_context.loop.after(longestAnswer, [this, wait = ++m_waits] {
        // Not every move is told, so the server is asked once for where the window came to rest. Until it says so the
        // target holds: between a new size and its place the two do not belong together.
        askPosition([this, wait] {
            if (wait != m_waits)
                return;
            if (m_isCatchingUp)
                return startAnswerTimer();
            m_answerTimer.end();
            comeToRest();
        });
    });
}

void WindowFrame::comeToRest()
{
    m_detour.reset();
    // The last size may be reported once more, from inside the frame.
    if (m_recent.size() > 1)
        m_recent.erase(m_recent.begin(), m_recent.end() - 1);
    m_limits.include(m_pixels, m_pixels);
    m_didSettle();
}

} // namespace backends
