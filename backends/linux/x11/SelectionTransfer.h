#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "platform/foundation/Result.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace backends {

// One question to the owner of a selection: its data as one type, handed over in one piece or in many (ICCCM 2.4 and
// 2.7.2). Nothing waits for it, and dropping it ends it. Main thread only.
class SelectionTransfer {
public:
    struct Question {
        xcb_atom_t selection = XCB_ATOM_NONE;
        xcb_atom_t type = XCB_ATOM_NONE;
        // Of what led to the question: a drop, a key.
        xcb_timestamp_t time = XCB_CURRENT_TIME;
        // How long the owner may be silent. All in all it has a dozen times that.
        platform::Seconds patience { 5 };
        std::size_t sizeLimit = 64u << 20; // bytes
    };
    // The codes of the errors, whose domain is "Selection".
    enum Failure { Refused, TimedOut, TooSlow, TooLarge, Malformed };
    // Called once, never from inside the constructor. It may drop the transfer.
    using Completion = std::function<void(platform::Result<std::string>)>;

    SelectionTransfer(Connection& connection, EventLoop& loop, Question question, Completion completion);
    ~SelectionTransfer();
    SelectionTransfer(SelectionTransfer const&) = delete;
    SelectionTransfer& operator=(SelectionTransfer const&) = delete;

private:
    void handle(xcb_generic_event_t const& event);
    void handleAnswer(xcb_selection_notify_event_t const& answer);
    void fetch();
    void handlePiece(xcb_get_property_reply_t const* piece);
    void handleAnnouncement(xcb_get_property_reply_t const& announcement);
    void expectMore();
    void fail(Failure failure);
    void finish(platform::Result<std::string> result);

    Connection& m_connection;
    EventLoop& m_loop;
    Question m_question;
    Completion m_completion;
    // A window for this question alone: what a late owner still writes for it cannot meet another one's data.
    xcb_window_t m_requestor;
    xcb_atom_t m_property;
    WindowEvents::Registration m_registration;
    std::string m_bytes;
    bool m_isAnswered = false;
    bool m_isIncremental = false;
    LoopSource m_silence;
    LoopSource m_deadline;
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace backends
