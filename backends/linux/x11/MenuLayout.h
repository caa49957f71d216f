#pragma once

#include "backends/linux/x11/PixelRect.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace backends {

// Lengths of a menu at one scale, in pixels.
struct MenuMetrics {
    std::int32_t border = 1;
    // Between the border and the first and last row.
    std::int32_t margin = 0;
    std::int32_t rowHeight = 0;
    std::int32_t separatorHeight = 0;
    // Of the widest row, with all that stands beside its text.
    std::int32_t rowWidth = 0;
};

// Where the rows of a menu are, in pixels from its top left: arithmetic only. The rows' full size is kept when the menu
// is larger than its monitor; what is beyond the window is there and cannot be seen.
class MenuLayout {
public:
    enum class Row {
        Separator,
        Disabled,
        // Can be chosen.
        Enabled,
    };

    MenuLayout() = default;
    // No larger than the monitor.
    MenuLayout(std::vector<Row> rows, MenuMetrics const& metrics, PixelRect const& monitor);

    std::int32_t width() const { return m_width; }
    std::int32_t height() const { return m_height; }
    std::size_t count() const { return m_rows.size(); }
    PixelRect rowRect(std::size_t row) const { return m_rects[row]; }
    bool isEnabled(std::size_t row) const { return m_rows[row] == Row::Enabled; }

    std::optional<std::size_t> rowAt(std::int32_t x, std::int32_t y) const;
    // Rows that can be chosen, over the ends and around; absent when there is none. From nowhere the first step leads
    // to the end that it comes from.
    std::optional<std::size_t> next(std::optional<std::size_t> row) const { return step(row, 1); }
    std::optional<std::size_t> previous(std::optional<std::size_t> row) const { return step(row, -1); }
    std::optional<std::size_t> first() const { return next(std::nullopt); }
    std::optional<std::size_t> last() const { return previous(std::nullopt); }

    // Where it opens, in pixels of the root: below the anchor where there is room, else above, else beside it, and
    // never beyond the monitor.
    PixelRect beside(PixelRect const& anchor, PixelRect const& monitor) const;

private:
    std::optional<std::size_t> step(std::optional<std::size_t> from, int direction) const;

    std::vector<Row> m_rows;
    std::vector<PixelRect> m_rects;
    std::int32_t m_width = 1;
    std::int32_t m_height = 1;
};

} // namespace backends
