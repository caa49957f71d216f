#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace backends {

// Pointer and keyboard while a menu is open: both or none. Another client may hold one of them for a moment, as the
// panel does whose icon was pressed; it is tried again for about a second. Main thread only.
class MenuGrabs {
public:
    // The pointer at the moment at which it became ours, in pixels of the root.
    struct Pointer {
        std::int32_t x = 0;
        std::int32_t y = 0;
        bool isButtonDown = false;
    };

    MenuGrabs(Connection& connection, EventLoop& loop);
    ~MenuGrabs() { release(); }
    MenuGrabs(MenuGrabs const&) = delete;
    MenuGrabs& operator=(MenuGrabs const&) = delete;

    // For a mapped window, which gets all events of pointer and keyboard from then on. The answer comes once and from
    // the loop: absent when somebody else did not let go in time.
    void take(xcb_window_t window, std::function<void(std::optional<Pointer> const&)> answer);
    bool areHeld() const { return m_areHeld; }

    // At once, whatever was reached; no answer comes any more.
    void release();
    // The keyboard at once, the pointer with the button that is down: nobody hears of the rest of the click. The window
    // may go meanwhile.
    void releaseAfter(xcb_button_t button);

private:
    struct Attempt {
        bool hasPointer = false;
        bool hasKeyboard = false;
    };

    void attempt();
    void finish(Attempt const& attempt, xcb_query_pointer_reply_t const* pointer);
    void letGo();
    void handleRest(xcb_generic_event_t const& event, xcb_button_t button);

    Connection& m_connection;
    EventLoop& m_loop;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    std::function<void(std::optional<Pointer> const&)> m_answer;
    // Answers to an attempt that was given up concern nobody.
    std::shared_ptr<Attempt> m_attempt;
    int m_attemptsLeft = 0;
    LoopSource m_retry;
    bool m_isAsked = false;
    bool m_areHeld = false;
    WindowEvents::Registration m_restAtWindow;
    WindowEvents::Registration m_restAtRoot;
};

} // namespace backends
