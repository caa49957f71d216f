#include "backends/linux/x11/MenuLayout.h"

#include <algorithm>
#include <utility>

namespace backends {

namespace {

// The nearest place at which the length lies inside the range; its beginning where it is longer than that.
std::int32_t inside(std::int32_t place, std::int32_t length, std::int32_t begin, std::int32_t end)
{
    return std::max(std::min(place, end - length), begin);
}

} // namespace

MenuLayout::MenuLayout(std::vector<Row> rows, MenuMetrics const& metrics, PixelRect const& monitor)
    : m_rows(std::move(rows))
{
    // The server knows no window without an extent.
    m_width = std::clamp(metrics.rowWidth + 2 * metrics.border, 1, std::max(monitor.width, 1));
    auto y = metrics.border + metrics.margin;
    for (auto const row : m_rows) {
        auto const height = row == Row::Separator ? metrics.separatorHeight : metrics.rowHeight;
        m_rects.push_back({ metrics.border, y, std::max(m_width - 2 * metrics.border, 0), height });
        y += height;
    }
    m_height = std::clamp(y + metrics.margin + metrics.border, 1, std::max(monitor.height, 1));
}

std::optional<std::size_t> MenuLayout::rowAt(std::int32_t x, std::int32_t y) const
{
    if (!PixelRect { 0, 0, m_width, m_height }.contains(x, y))
        return std::nullopt;
    auto const found
        = std::find_if(m_rects.begin(), m_rects.end(), [&](auto const& rect) { return rect.contains(x, y); });
    if (found == m_rects.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - m_rects.begin());
}

std::optional<std::size_t> MenuLayout::step(std::optional<std::size_t> from, int direction) const
{
    auto const size = m_rows.size();
    auto row = from.value_or(direction > 0 ? size - 1 : 0);
    for (std::size_t i = 0; i < size; ++i) {
        row = direction > 0 ? (row + 1) % size : (row + size - 1) % size;
        if (isEnabled(row))
            return row;
    }
    return std::nullopt;
}

PixelRect MenuLayout::beside(PixelRect const& anchor, PixelRect const& monitor) const
{
    PixelRect place { anchor.x, anchor.bottom(), m_width, m_height };
    bool const fitsBelow = place.bottom() <= monitor.bottom();
    bool const fitsAbove = anchor.y - m_height >= monitor.y;
    if (!fitsBelow && fitsAbove)
        place.y = anchor.y - m_height;
    if (!fitsBelow && !fitsAbove)
        place.x = anchor.right() + m_width <= monitor.right() ? anchor.right() : anchor.x - m_width;
    place.x = inside(place.x, m_width, monitor.x, monitor.right());
    place.y = inside(place.y, m_height, monitor.y, monitor.bottom());
    return place;
}

} // namespace backends
