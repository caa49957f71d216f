#include "backends/linux/x11/ScreenEdges.h"

#include "backends/linux/x11/PropertyValues.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace backends {

namespace {

constexpr std::size_t edgeCount = 4;
constexpr std::uint32_t longestEdge = std::numeric_limits<std::int16_t>::max();

} // namespace

ScreenEdges::ScreenEdges(Connection& connection)
    : m_connection(connection)
{
}

void ScreenEdges::read(Windows which)
{
    m_connection.askProperty(
        m_connection.root(), m_connection.atom(AtomName::NET_CLIENT_LIST), [this, which](auto const* reply) {
            auto const listed = wordsOf(reply);
            std::erase_if(m_windows, [&](auto const& entry) {
                return std::find(listed.begin(), listed.end(), entry.first) == listed.end();
            });
            for (auto const window : listed) {
                if (m_windows.emplace(window, std::nullopt).second || which == Windows::All)
                    readWindow(window);
            }
        });
}

void ScreenEdges::readWindow(xcb_window_t window)
{
    auto const note = [this, window](auto const* reply) {
        auto const kept = keptBy(wordsOf(reply));
        auto const found = m_windows.find(window);
        // It may have gone meanwhile.
        if (kept && found != m_windows.end())
            found->second = kept;
    };
    m_connection.askProperty(
        window, m_connection.atom(AtomName::NET_WM_STRUT), [this, window, note](auto const* reply) {
            if (auto const found = m_windows.find(window); found != m_windows.end())
                found->second.reset();
            note(reply);
        });
    // The newer one holds where both are.
    m_connection.askProperty(window, m_connection.atom(AtomName::NET_WM_STRUT_PARTIAL), note);
}

std::optional<ScreenEdges::Kept> ScreenEdges::keptBy(std::span<std::uint32_t const> words)
{
    Kept kept {};
    if (words.size() < edgeCount)
        return std::nullopt;
    // Whoever says more than any screen has is taken at the largest number that a screen may have.
    std::transform(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(std::min(words.size(), kept.size())),
        kept.begin(), [](auto word) { return static_cast<std::int32_t>(std::min(word, longestEdge)); });
    // The older form has the whole length of each edge.
    for (auto last = edgeCount + 1; words.size() < kept.size() && last < kept.size(); last += 2)
        kept[last] = longestEdge;
    bool const keepsNothing
        = std::all_of(kept.begin(), kept.begin() + edgeCount, [](auto depth) { return depth <= 0; });
    return keepsNothing ? std::nullopt : std::optional(kept);
}

std::optional<PixelRect> ScreenEdges::freePart(PixelRect const& monitor, PixelRect const& screen) const
{
    auto left = monitor.x, right = monitor.right(), top = monitor.y, bottom = monitor.bottom();
    bool isKept = false;
    for (auto const& [window, kept] : m_windows) {
        if (!kept)
            continue;
        isKept = true;
        auto const& edges = *kept;
        auto const isBeside = [](std::int32_t first, std::int32_t last, std::int32_t start, std::int32_t end) {
            return first < end && last >= start;
        };
        bool const isLeft = isBeside(edges[4], edges[5], monitor.y, monitor.bottom());
        bool const isRight = isBeside(edges[6], edges[7], monitor.y, monitor.bottom());
        bool const isTop = isBeside(edges[8], edges[9], monitor.x, monitor.right());
        bool const isBottom = isBeside(edges[10], edges[11], monitor.x, monitor.right());
        // One that reaches across this monitor belongs to another one, farther from that edge of the screen.
        if (isLeft && edges[0] < monitor.right())
            left = std::max(left, edges[0]);
        if (isRight && screen.right() - edges[1] > monitor.x)
            right = std::min(right, screen.right() - edges[1]);
        if (isTop && edges[2] < monitor.bottom())
            top = std::max(top, edges[2]);
        if (isBottom && screen.bottom() - edges[3] > monitor.y)
            bottom = std::min(bottom, screen.bottom() - edges[3]);
    }
    PixelRect const part { left, top, right - left, bottom - top };
    return isKept && !part.isEmpty() ? std::optional(part) : std::nullopt;
}

} // namespace backends
