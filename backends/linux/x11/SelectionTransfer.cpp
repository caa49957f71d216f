#include "backends/linux/x11/SelectionTransfer.h"

#include "backends/linux/x11/PropertyValues.h"

#include <utility>

namespace backends {

namespace {

// An owner that says a little now and then would keep its asker for ever.
constexpr double patiencesInAll = 12;

char const* description(SelectionTransfer::Failure failure)
{
    switch (failure) {
    case SelectionTransfer::Refused:
        return "the owner of the selection refused";
    case SelectionTransfer::TimedOut:
        return "the owner of the selection did not answer in time";
    case SelectionTransfer::TooSlow:
        return "the owner of the selection is too slow";
    case SelectionTransfer::TooLarge:
        return "the data is too large";
    case SelectionTransfer::Malformed:
        return "the data is not in bytes";
    }
    return "";
}

} // namespace

SelectionTransfer::SelectionTransfer(Connection& connection, EventLoop& loop, Question question, Completion completion)
    : m_connection(connection)
    , m_loop(loop)
    , m_question(question)
    , m_completion(std::move(completion))
    , m_requestor(xcb_generate_id(connection.wire()))
    , m_property(connection.atom(AtomName::PANEWELD_DROP))
{
    auto* const wire = m_connection.wire();
    // Never shown, and no business of a window manager.
    std::uint32_t const values[] = { 1, XCB_EVENT_MASK_PROPERTY_CHANGE };
    xcb_create_window(wire, 0, m_requestor, m_connection.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    m_registration
        = m_connection.windowEvents().listen(m_requestor, [this](xcb_generic_event_t const& event) { handle(event); });
    xcb_convert_selection(wire, m_requestor, m_question.selection, m_question.type, m_property, m_question.time);
    m_deadline = m_loop.after(m_question.patience * patiencesInAll, [this] { fail(TooSlow); });
    expectMore();
}

SelectionTransfer::~SelectionTransfer() { xcb_destroy_window(m_connection.wire(), m_requestor); }

void SelectionTransfer::handle(xcb_generic_event_t const& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_SELECTION_NOTIFY:
        handleAnswer(reinterpret_cast<xcb_selection_notify_event_t const&>(event));
        break;
    case XCB_PROPERTY_NOTIFY: {
        auto const& notice = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        if (m_isIncremental && notice.atom == m_property && notice.state == XCB_PROPERTY_NEW_VALUE)
            fetch();
        break;
    }
    default:
        break;
    }
}

void SelectionTransfer::handleAnswer(xcb_selection_notify_event_t const& answer)
{
    if (m_isAnswered || answer.selection != m_question.selection || answer.target != m_question.type)
        return;
    m_isAnswered = true;
    if (answer.property != m_property) {
        fail(Refused);
        return;
    }
    expectMore();
    fetch();
}

// Deleting what has been read is how the owner learns that the next piece may come.
void SelectionTransfer::fetch()
{
    auto const words = static_cast<std::uint32_t>((m_question.sizeLimit - m_bytes.size()) / 4 + 1);
    auto const cookie
        = xcb_get_property(m_connection.wire(), 1, m_requestor, m_property, XCB_GET_PROPERTY_TYPE_ANY, 0, words);
    m_connection.ask<xcb_get_property_reply_t>(
        cookie.sequence, [this, life = std::weak_ptr<bool>(m_life)](auto const* piece) {
            if (!life.expired())
                handlePiece(piece);
        });
}

void SelectionTransfer::handlePiece(xcb_get_property_reply_t const* piece)
{
    if (!m_completion)
        return;
    bool const isThere = piece && piece->type != XCB_ATOM_NONE;
    // A piece that came together with the one before it has been read already.
    if (!isThere && m_isIncremental)
        return;
    if (isThere && !m_isIncremental && piece->type == m_connection.atom(AtomName::INCR)) {
        handleAnnouncement(*piece);
        return;
    }
    bool const isEnd = m_isIncremental && piece->value_len == 0;
    if (!isThere || (piece->format != 8 && !isEnd)) {
        fail(Malformed);
        return;
    }
    if (piece->bytes_after > 0 || m_bytes.size() + piece->value_len > m_question.sizeLimit) {
        fail(TooLarge);
        return;
    }
    m_bytes.append(static_cast<char const*>(xcb_get_property_value(piece)), piece->value_len);
    if (!m_isIncremental || isEnd)
        finish(std::move(m_bytes));
    else
        expectMore();
}

// It says how much there is at least.
void SelectionTransfer::handleAnnouncement(xcb_get_property_reply_t const& announcement)
{
    auto const sizes = wordsOf(&announcement);
    if (!sizes.empty() && sizes.front() > m_question.sizeLimit) {
        fail(TooLarge);
        return;
    }
    m_isIncremental = true;
    expectMore();
}

void SelectionTransfer::expectMore()
{
    m_silence = m_loop.after(m_question.patience, [this] { fail(TimedOut); });
}

void SelectionTransfer::fail(Failure failure)
{
    finish(platform::NSError { "Selection", failure, description(failure) });
}

void SelectionTransfer::finish(platform::Result<std::string> result)
{
    m_silence.end();
    m_deadline.end();
    m_registration = {};
    // Nothing of this is touched any more: the completion may drop it.
    if (auto const completion = std::exchange(m_completion, nullptr))
        completion(std::move(result));
}

} // namespace backends
