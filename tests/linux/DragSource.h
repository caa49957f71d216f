#pragma once

#include "tests/linux/Client.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// Another program that drags something (XDND), a step at a time and as badly as a test wants it.
class DragSource : public Client {
public:
    // How it hands over data.
    enum class Manner { AtOnce, Incremental, Silent, StopsMidway, InWords, EmptyHanded };
    struct Offer {
        std::string type;
        // Absent: a conversion to it is refused.
        std::optional<std::string> data;
    };
    struct Answer {
        xcb_window_t from = XCB_WINDOW_NONE;
        std::uint32_t flags = 0;
        xcb_atom_t action = XCB_ATOM_NONE;
    };

    explicit DragSource(std::string const& display);

    // Owns the selection, and writes its types down where more than three do not fit.
    void enter(xcb_window_t target, std::uint32_t version = 5);
    void position(xcb_window_t target);
    void leave(xcb_window_t target);
    void drop(xcb_window_t target);
    void tell(xcb_window_t target, std::string const& type, std::vector<std::uint32_t> const& data, int format = 32);
    void disown();
    void destroyWindow();

    // What came in: reads without waiting, and hands over what it is asked for.
    void look();
    // The types that it was asked for, in this order.
    std::vector<std::string> requests;
    std::vector<Answer> statuses;
    std::vector<Answer> finishes;

    std::vector<Offer> offers;
    Manner manner = Manner::AtOnce;
    bool hidesTypeList = false;
    std::size_t pieceSize = 65536; // bytes
    // What an incremental transfer says that is to come, where that is not the truth.
    std::optional<std::uint32_t> announcedSize;
    // As of the last drop, and of its conversions.
    xcb_timestamp_t dropTime = 4711;
    std::vector<xcb_timestamp_t> requestTimes;
    xcb_window_t window() const { return m_window; }
    std::size_t piecesLeft() const { return m_piecesLeft; }

private:
    void hear(xcb_client_message_event_t const& message);
    void answer(xcb_selection_request_event_t const& request);
    bool put(xcb_selection_request_event_t const& request, Offer const& offer);
    void putNextPiece();
    void put(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string const& bytes);

    xcb_window_t m_window;
    // Of an incremental transfer; the last piece is empty.
    std::string m_bytes;
    std::size_t m_sent = 0;
    std::size_t m_piecesLeft = 0;
    xcb_window_t m_requestor = XCB_WINDOW_NONE;
    xcb_atom_t m_property = XCB_ATOM_NONE;
    xcb_atom_t m_type = XCB_ATOM_NONE;
};

} // namespace paneweld_tests
