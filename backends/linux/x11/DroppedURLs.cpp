#include "backends/linux/x11/DroppedURLs.h"

#include "backends/linux/x11/URIList.h"

#include <algorithm>
#include <limits.h>
#include <unistd.h>
#include <utility>

namespace backends {

namespace {

// The best first: a list has all files, the others often only the first one.
constexpr AtomName readableTypes[]
    = { AtomName::TEXT_URI_LIST, AtomName::TEXT_URI_LIST_UTF8, AtomName::TEXT_X_MOZ_URL, AtomName::NETSCAPE_URL };

std::string ownHost()
{
    char name[HOST_NAME_MAX + 1] {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

} // namespace

DroppedURLs::DroppedURLs(Connection& connection, EventLoop& loop, std::vector<xcb_atom_t> const& offered,
    xcb_timestamp_t time, platform::Seconds patience, Completion completion)
    : m_connection(connection)
    , m_loop(loop)
    , m_completion(std::move(completion))
{
    m_question.selection = connection.atom(AtomName::XdndSelection);
    m_question.time = time;
    m_question.patience = patience;
    for (auto const name : readableTypes) {
        auto const type = connection.atom(name);
        if (std::find(offered.begin(), offered.end(), type) != offered.end())
            m_types.push_back(type);
    }
    m_start = loop.soon([this] { tryNext(); });
}

void DroppedURLs::tryNext()
{
    if (m_types.empty()) {
        finish(std::nullopt);
        return;
    }
    m_question.type = m_types.front();
    m_types.pop_front();
    m_transfer = std::make_unique<SelectionTransfer>(
        m_connection, m_loop, m_question, [this, type = m_question.type](auto const& data) { handle(type, data); });
}

void DroppedURLs::handle(xcb_atom_t type, platform::Result<std::string> const& data)
{
    auto addresses = data ? decoded(type, data.value()) : std::nullopt;
    m_cause = data ? "the addresses cannot be decoded" : data.error().localizedDescription;
    // Who has kept the user waiting once is not asked again.
    bool const hasWaited = !data
        && (data.error().code == SelectionTransfer::TimedOut || data.error().code == SelectionTransfer::TooSlow);
    if (addresses || hasWaited)
        finish(std::move(addresses));
    else
        tryNext();
}

DroppedURLs::Addresses DroppedURLs::decoded(xcb_atom_t type, std::string const& bytes) const
{
    if (type == m_connection.atom(AtomName::TEXT_X_MOZ_URL))
        return urlsFromMozURL(bytes, ownHost());
    if (type == m_connection.atom(AtomName::NETSCAPE_URL))
        return urlsFromNetscapeURL(bytes, ownHost());
    return urlsFromURIList(bytes, ownHost());
}

void DroppedURLs::finish(Addresses addresses)
{
    auto const cause = std::exchange(m_cause, {});
    if (auto const completion = std::exchange(m_completion, nullptr))
        completion(std::move(addresses), cause);
}

} // namespace backends
