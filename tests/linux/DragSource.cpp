#include "tests/linux/DragSource.h"

#include "backends/linux/x11/Handles.h"

#include <algorithm>

namespace paneweld_tests {

using backends::XHandle;

DragSource::DragSource(std::string const& display)
    : Client(display)
    , m_window(xcb_generate_id(wire()))
{
    xcb_get_maximum_request_length(wire());
    std::uint32_t const isUnmanaged = 1;
    xcb_create_window(wire(), XCB_COPY_FROM_PARENT, m_window, root(), -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &isUnmanaged);
    sync();
}

void DragSource::enter(xcb_window_t target, std::uint32_t version)
{
    xcb_set_selection_owner(wire(), m_window, atom("XdndSelection"), XCB_CURRENT_TIME);
    std::vector<std::uint32_t> types;
    for (auto const& offer : offers)
        types.push_back(atom(offer.type));
    bool const isLong = types.size() > 3;
    if (isLong && !hidesTypeList) {
        xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, m_window, atom("XdndTypeList"), XCB_ATOM_ATOM, 32,
            static_cast<std::uint32_t>(types.size()), types.data());
    }
    types.resize(3, XCB_ATOM_NONE);
    tell(target, "XdndEnter", { m_window, version << 24 | (isLong ? 1u : 0u), types[0], types[1], types[2] });
}

void DragSource::position(xcb_window_t target)
{
    tell(target, "XdndPosition", { m_window, 0, 10u << 16 | 10u, XCB_CURRENT_TIME, atom("XdndActionMove") });
}

void DragSource::leave(xcb_window_t target) { tell(target, "XdndLeave", { m_window }); }

void DragSource::drop(xcb_window_t target) { tell(target, "XdndDrop", { m_window, 0, dropTime }); }

void DragSource::tell(xcb_window_t target, std::string const& type, std::vector<std::uint32_t> const& data, int format)
{
    send(target, XCB_EVENT_MASK_NO_EVENT, message(target, type, data, format));
    sync();
}

void DragSource::disown()
{
    xcb_set_selection_owner(wire(), XCB_WINDOW_NONE, atom("XdndSelection"), XCB_CURRENT_TIME);
    sync();
}

void DragSource::destroyWindow()
{
    xcb_destroy_window(wire(), m_window);
    sync();
}

void DragSource::look()
{
    while (XHandle<xcb_generic_event_t> const event { xcb_poll_for_event(wire()) }) {
        switch (event->response_type & 0x7F) {
        case XCB_CLIENT_MESSAGE:
            hear(reinterpret_cast<xcb_client_message_event_t const&>(*event));
            break;
        case XCB_SELECTION_REQUEST:
            answer(reinterpret_cast<xcb_selection_request_event_t const&>(*event));
            break;
        case XCB_PROPERTY_NOTIFY: {
            auto const& notice = reinterpret_cast<xcb_property_notify_event_t const&>(*event);
            bool const isTaken
                = notice.window == m_requestor && notice.atom == m_property && notice.state == XCB_PROPERTY_DELETE;
            if (isTaken && m_piecesLeft > 0)
                putNextPiece();
            break;
        }
        default:
            break;
        }
    }
    xcb_flush(wire());
}

void DragSource::hear(xcb_client_message_event_t const& message)
{
    auto const* const data = message.data.data32;
    if (message.type == atom("XdndStatus"))
        statuses.push_back({ data[0], data[1], data[4] });
    else if (message.type == atom("XdndFinished"))
        finishes.push_back({ data[0], data[1], data[2] });
}

void DragSource::answer(xcb_selection_request_event_t const& request)
{
    auto const offer = std::find_if(
        offers.begin(), offers.end(), [&](Offer const& one) { return atom(one.type) == request.target; });
    requests.push_back(offer != offers.end() ? offer->type : "?");
    requestTimes.push_back(request.time);
    if (manner == Manner::Silent)
        return;
    xcb_selection_notify_event_t notice {};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    if (offer != offers.end() && put(request, *offer))
        notice.property = request.property;
    send(request.requestor, XCB_EVENT_MASK_NO_EVENT, notice);
}

bool DragSource::put(xcb_selection_request_event_t const& request, Offer const& offer)
{
    if (!offer.data)
        return false;
    auto const& bytes = *offer.data;
    switch (manner) {
    case Manner::AtOnce:
        put(request.requestor, request.property, request.target, bytes);
        return true;
    case Manner::InWords: {
        std::uint32_t const words[] = { 1, 2, 3 };
        xcb_change_property(
            wire(), XCB_PROP_MODE_REPLACE, request.requestor, request.property, request.target, 32, 3, words);
        return true;
    }
    case Manner::Incremental:
    case Manner::StopsMidway:
        break;
    default:
        return true;
    }
    m_bytes = bytes;
    m_sent = 0;
    m_piecesLeft = (bytes.size() + pieceSize - 1) / pieceSize + 1;
    m_requestor = request.requestor;
    m_property = request.property;
    m_type = request.target;
    std::uint32_t const mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(wire(), m_requestor, XCB_CW_EVENT_MASK, &mask);
    auto const size = announcedSize.value_or(static_cast<std::uint32_t>(bytes.size()));
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, m_requestor, m_property, atom("INCR"), 32, 1, &size);
    return true;
}

void DragSource::putNextPiece()
{
    if (manner == Manner::StopsMidway && m_piecesLeft <= 2)
        return;
    put(m_requestor, m_property, m_type, m_bytes.substr(m_sent, pieceSize));
    m_sent = std::min(m_sent + pieceSize, m_bytes.size());
    --m_piecesLeft;
}

void DragSource::put(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string const& bytes)
{
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
        static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

} // namespace paneweld_tests
