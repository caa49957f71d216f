#include "backends/linux/x11/MenuGrabs.h"

#include <utility>

namespace backends {

namespace {

constexpr platform::Seconds retryDelay { 0.02 };
constexpr int maximumAttempts = 50;

constexpr std::uint16_t pointerEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE
    | XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
constexpr std::uint16_t restEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
constexpr std::uint16_t anyButton = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;

} // namespace

MenuGrabs::MenuGrabs(Connection& connection, EventLoop& loop)
    : m_connection(connection)
    , m_loop(loop)
{
}

void MenuGrabs::take(xcb_window_t window, std::function<void(std::optional<Pointer> const&)> answer)
{
    release();
    m_window = window;
    m_answer = std::move(answer);
    m_attemptsLeft = maximumAttempts;
    attempt();
}

void MenuGrabs::attempt()
{
    if (!m_connection.isAlive()) {
        m_retry = m_loop.soon([this] { std::exchange(m_answer, nullptr)(std::nullopt); });
        return;
    }
    auto* const wire = m_connection.wire();
    m_isAsked = true;
    m_attempt = std::make_shared<Attempt>();
    std::weak_ptr<Attempt> const weak = m_attempt;
    // Not with the time of the press: when somebody else has held one of them since, the server would call it outdated.
    // All events go to the window and none as usual, so that a press on the icon does not open the menu again.
    auto const pointer = xcb_grab_pointer(wire, 0, m_window, pointerEvents, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
        XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
    auto const keyboard
        = xcb_grab_keyboard(wire, 0, m_window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    auto const place = xcb_query_pointer(wire, m_connection.root());
    m_connection.ask<xcb_grab_pointer_reply_t>(pointer.sequence, [weak](auto const* reply) {
        if (auto const current = weak.lock())
            current->hasPointer = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    });
    m_connection.ask<xcb_grab_keyboard_reply_t>(keyboard.sequence, [weak](auto const* reply) {
        if (auto const current = weak.lock())
            current->hasKeyboard = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    });
    m_connection.ask<xcb_query_pointer_reply_t>(place.sequence, [this, weak](auto const* reply) {
        if (auto const current = weak.lock())
            finish(*current, reply);
    });
}

void MenuGrabs::finish(Attempt const& attempt, xcb_query_pointer_reply_t const* pointer)
{
    if (attempt.hasPointer && attempt.hasKeyboard && pointer) {
        m_areHeld = true;
        std::exchange(m_answer, nullptr)(
            Pointer { pointer->root_x, pointer->root_y, (pointer->mask & anyButton) != 0 });
        return;
    }
    // One without the other would leave the user with half a desktop while we wait.
    letGo();
    if (--m_attemptsLeft > 0) {
        m_retry = m_loop.after(retryDelay, [this] { this->attempt(); });
        return;
    }
    std::exchange(m_answer, nullptr)(std::nullopt);
}

void MenuGrabs::letGo()
{
    m_attempt.reset();
    m_areHeld = false;
    if (!std::exchange(m_isAsked, false) || !m_connection.isAlive())
        return;
    // Also what was asked and is not answered yet: the server does one after the other.
    xcb_ungrab_pointer(m_connection.wire(), XCB_CURRENT_TIME);
    xcb_ungrab_keyboard(m_connection.wire(), XCB_CURRENT_TIME);
}

void MenuGrabs::release()
{
    m_retry.end();
    m_answer = nullptr;
    m_restAtWindow = {};
    m_restAtRoot = {};
    letGo();
}

void MenuGrabs::releaseAfter(xcb_button_t button)
{
    if (!m_areHeld || !m_connection.isAlive())
        return release();
    m_areHeld = false;
    xcb_ungrab_keyboard(m_connection.wire(), XCB_CURRENT_TIME);
    // The server ends a grab with its window. The root stays, and taking a grab over from oneself always succeeds.
    auto const root = m_connection.root();
    auto const cookie = xcb_grab_pointer(m_connection.wire(), 0, root, restEvents, XCB_GRAB_MODE_ASYNC,
        XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
    xcb_discard_reply(m_connection.wire(), cookie.sequence);
    // A quick release was sent to the window still.
    auto const handler = [this, button](auto const& event) { handleRest(event, button); };
    m_restAtWindow = m_connection.windowEvents().listen(m_window, handler);
    m_restAtRoot = m_connection.windowEvents().listen(root, handler);
}

void MenuGrabs::handleRest(xcb_generic_event_t const& event, xcb_button_t button)
{
    auto const type = event.response_type & 0x7F;
    auto const& detail = reinterpret_cast<xcb_button_press_event_t const&>(event).detail;
    // With another press the rest of the first one does not matter any more.
    if ((type == XCB_BUTTON_RELEASE && detail == button) || type == XCB_BUTTON_PRESS)
        release();
}

} // namespace backends
