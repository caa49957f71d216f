#pragma once

#include "backends/linux/x11/MenuLayout.h"
#include "backends/linux/x11/MenuRow.h"
#include "backends/linux/x11/MenuTheme.h"
#include "backends/linux/x11/PixelFormat.h"
#include "platform/foundation/Result.h"

#include <memory>
#include <optional>
#include <vector>

namespace backends {

// Draws menus into memory, in a theme and at a scale. Main thread only.
class MenuPainter {
public:
    // Loads what it draws with; the error says what is not there.
    static platform::Result<std::unique_ptr<MenuPainter>> create(MenuTheme theme, double scale);
    ~MenuPainter();

    MenuMetrics measure(std::vector<MenuRow> const& rows) const;

    // A new picture of the whole menu.
    void draw(std::vector<MenuRow> const& rows, MenuLayout const& layout, std::optional<std::size_t> current);
    // One row of that picture anew.
    void drawRow(MenuRow const& row, PixelRect const& rect, bool isCurrent);
    // Valid until the next call.
    PixelView picture() const;

private:
    struct Tools;
    explicit MenuPainter(std::unique_ptr<Tools> tools, MenuTheme theme, double scale);

    void drawBackground(PixelRect const& rect, MenuColour const& colour);
    void drawHighlight(PixelRect const& rect);
    void drawSeparator(PixelRect const& rect);
    void drawArrow(PixelRect const& rect, MenuColour const& colour);
    std::int32_t pixels(double points) const;
    std::int32_t lineWidth() const;

    std::unique_ptr<Tools> m_tools;
    MenuTheme m_theme;
    double m_scale;
};

} // namespace backends
