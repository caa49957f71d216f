#include "backends/linux/x11/MenuPainter.h"

#include "backends/linux/x11/PangoLibrary.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace backends {

using platform::NSError;

namespace {

// Lengths in points.
constexpr double menuMargin = 4, rowMargin = 5, textMargin = 14, shortcutGap = 36;
constexpr double highlightInset = 4, highlightRadius = 4;
constexpr double separatorSpace = 4, smallestWidth = 120;
constexpr double arrowWidth = 4, arrowHeight = 8;
// Fonts outside of this are a mistake in the desktop's settings.
constexpr double smallestFont = 6, largestFont = 32, ordinaryFont = 10;

constexpr double dotsPerInch = 96, pointsPerInch = 72;

template<typename T>
using Owned = std::unique_ptr<T, void (*)(T*)>;
// Held by the object system, whose function takes anything.
template<typename T>
using OwnedObject = std::unique_ptr<T, void (*)(gpointer)>;

struct Extent {
    int width = 0;
    int height = 0;
};

} // namespace

struct MenuPainter::Tools {
    explicit Tools(PangoLibrary const& library, std::string const& fontName, double scale)
        : pango(library)
        , fonts(pango.pango_cairo_font_map_new(), pango.g_object_unref)
        , context(pango.pango_font_map_create_context(fonts.get()), pango.g_object_unref)
        , font(pango.pango_font_description_from_string(fontName.c_str()), pango.pango_font_description_free)
        , surface(nullptr, pango.cairo_surface_destroy)
        , cairo(nullptr, pango.cairo_destroy)
    {
        pango.pango_cairo_context_set_resolution(context.get(), dotsPerInch * scale);
        // In points always, which is what the resolution turns into pixels.
        auto points = pango.pango_font_description_get_size(font.get()) / double { PANGO_SCALE };
        if (pango.pango_font_description_get_size_is_absolute(font.get()))
            points *= pointsPerInch / dotsPerInch;
        points = points > 0 ? std::clamp(points, smallestFont, largestFont) : ordinaryFont;
        pango.pango_font_description_set_size(font.get(), static_cast<int>(std::lround(points * PANGO_SCALE)));
    }

    // Cut off with dots beyond the width, where there is one.
    OwnedObject<PangoLayout> text(std::string const& characters, std::optional<int> width = {}) const
    {
        OwnedObject<PangoLayout> layout(pango.pango_layout_new(context.get()), pango.g_object_unref);
        auto const valid = platform::repairedUTF8(characters);
        pango.pango_layout_set_font_description(layout.get(), font.get());
        pango.pango_layout_set_single_paragraph_mode(layout.get(), 1);
        pango.pango_layout_set_text(layout.get(), valid.data(), static_cast<int>(valid.size()));
        if (width) {
            pango.pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
            pango.pango_layout_set_width(layout.get(), std::max(*width, 0) * PANGO_SCALE);
        }
        return layout;
    }

    Extent extent(PangoLayout* layout) const
    {
        Extent extent;
        pango.pango_layout_get_pixel_size(layout, &extent.width, &extent.height);
        return extent;
    }

    void setColour(MenuColour const& colour) const
    {
        pango.cairo_set_source_rgb(cairo.get(), colour.red, colour.green, colour.blue);
    }

    void show(PangoLayout* layout, std::int32_t x, PixelRect const& row) const
    {
        // On whole pixels, or the letters blur.
        auto const y = row.y + (row.height - extent(layout).height) / 2;
        pango.cairo_move_to(cairo.get(), x, y);
        pango.pango_cairo_show_layout(cairo.get(), layout);
    }

    PangoLibrary pango;
    OwnedObject<PangoFontMap> fonts;
    OwnedObject<PangoContext> context;
    Owned<PangoFontDescription> font;
    Owned<cairo_surface_t> surface;
    Owned<cairo_t> cairo;
};

platform::Result<std::unique_ptr<MenuPainter>> MenuPainter::create(MenuTheme theme, double scale)
{
    auto const library = PangoLibrary::load();
    if (!library.hasValue())
        return library.error();
    auto tools = std::make_unique<Tools>(library.value(), theme.font, scale);
    return std::unique_ptr<MenuPainter>(new MenuPainter(std::move(tools), std::move(theme), scale));
}

MenuPainter::MenuPainter(std::unique_ptr<Tools> tools, MenuTheme theme, double scale)
    : m_tools(std::move(tools))
    , m_theme(std::move(theme))
    , m_scale(scale)
{
}

MenuPainter::~MenuPainter() = default;

std::int32_t MenuPainter::pixels(double points) const
{
    return static_cast<std::int32_t>(std::lround(points * m_scale));
}

// Lines stay thin between the whole scales.
std::int32_t MenuPainter::lineWidth() const { return std::max(static_cast<std::int32_t>(m_scale), 1); }

MenuMetrics MenuPainter::measure(std::vector<MenuRow> const& rows) const
{
    // Of a text that is there in every font, so that rows are even.
    auto height = m_tools->extent(m_tools->text("Ág").get()).height;
    int widest = 0;
    for (auto const& row : rows) {
        auto const title = m_tools->extent(m_tools->text(row.title).get());
        auto width = title.width;
        if (!row.shortcut.empty())
            width += pixels(shortcutGap) + m_tools->extent(m_tools->text(row.shortcut).get()).width;
        if (row.hasSubmenu)
            width += pixels(shortcutGap) + pixels(arrowWidth);
        widest = std::max(widest, width);
        height = std::max(height, title.height);
    }
    return { .border = lineWidth(),
        .margin = pixels(menuMargin),
        .rowHeight = height + 2 * pixels(rowMargin),
        .separatorHeight = lineWidth() + 2 * pixels(separatorSpace),
        .rowWidth = std::max(widest + 2 * pixels(textMargin), pixels(smallestWidth)) };
}

void MenuPainter::draw(std::vector<MenuRow> const& rows, MenuLayout const& layout, std::optional<std::size_t> current)
{
    auto const& pango = m_tools->pango;
    m_tools->cairo.reset();
    m_tools->surface.reset(pango.cairo_image_surface_create(CAIRO_FORMAT_RGB24, layout.width(), layout.height()));
    m_tools->cairo.reset(pango.cairo_create(m_tools->surface.get()));
    PixelRect const whole { 0, 0, layout.width(), layout.height() };
    auto const border = lineWidth();
    drawBackground(whole, m_theme.border);
    drawBackground(shrunkBy(whole, { border, border, border, border }), m_theme.background);
    for (std::size_t row = 0; row < rows.size(); ++row)
        drawRow(rows[row], layout.rowRect(row), row == current);
}

void MenuPainter::drawRow(MenuRow const& row, PixelRect const& rect, bool isCurrent)
{
    if (rect.isEmpty())
        return;
    drawBackground(rect, m_theme.background);
    if (row.kind == MenuLayout::Row::Separator)
        return drawSeparator(rect);
    if (isCurrent)
        drawHighlight(rect);
    bool const isEnabled = row.kind == MenuLayout::Row::Enabled;
    auto const colour = [&](MenuColour const& ordinary) {
        return !isEnabled ? m_theme.disabled : isCurrent ? m_theme.highlightedText : ordinary;
    };
    auto const margin = pixels(textMargin);
    auto end = rect.right() - margin;
    if (row.hasSubmenu) {
        end -= pixels(arrowWidth);
        drawArrow({ end, rect.y, pixels(arrowWidth), rect.height }, colour(m_theme.text));
        end -= pixels(shortcutGap);
    }
    if (!row.shortcut.empty()) {
        auto const shortcut = m_tools->text(row.shortcut);
        end -= m_tools->extent(shortcut.get()).width;
        m_tools->setColour(colour(m_theme.shortcut));
        m_tools->show(shortcut.get(), end, rect);
        end -= pixels(shortcutGap);
    }
    m_tools->setColour(colour(m_theme.text));
    m_tools->show(m_tools->text(row.title, end - rect.x - margin).get(), rect.x + margin, rect);
}

void MenuPainter::drawBackground(PixelRect const& rect, MenuColour const& colour)
{
    auto const& pango = m_tools->pango;
    m_tools->setColour(colour);
    pango.cairo_rectangle(m_tools->cairo.get(), rect.x, rect.y, rect.width, rect.height);
    pango.cairo_fill(m_tools->cairo.get());
}

void MenuPainter::drawHighlight(PixelRect const& rect)
{
    auto const& pango = m_tools->pango;
    auto* const cairo = m_tools->cairo.get();
    double const radius = pixels(highlightRadius);
    double const left = rect.x + pixels(highlightInset), right = rect.right() - pixels(highlightInset);
    double const top = rect.y, bottom = rect.bottom();
    constexpr double quarter = std::numbers::pi / 2;
    m_tools->setColour(m_theme.highlight);
    pango.cairo_new_sub_path(cairo);
    pango.cairo_arc(cairo, right - radius, top + radius, radius, -quarter, 0);
    pango.cairo_arc(cairo, right - radius, bottom - radius, radius, 0, quarter);
    pango.cairo_arc(cairo, left + radius, bottom - radius, radius, quarter, 2 * quarter);
    pango.cairo_arc(cairo, left + radius, top + radius, radius, 2 * quarter, 3 * quarter);
    pango.cairo_close_path(cairo);
    pango.cairo_fill(cairo);
}

void MenuPainter::drawSeparator(PixelRect const& rect)
{
    auto const inset = pixels(highlightInset);
    auto const y = rect.y + (rect.height - lineWidth()) / 2;
    drawBackground({ rect.x + inset, y, rect.width - 2 * inset, lineWidth() }, m_theme.separator);
}

void MenuPainter::drawArrow(PixelRect const& rect, MenuColour const& colour)
{
    auto const& pango = m_tools->pango;
    auto* const cairo = m_tools->cairo.get();
    double const half = pixels(arrowHeight) / 2.0;
    m_tools->setColour(colour);
    pango.cairo_move_to(cairo, rect.x, rect.middleY() - half);
    pango.cairo_line_to(cairo, rect.right(), rect.middleY());
    pango.cairo_line_to(cairo, rect.x, rect.middleY() + half);
    pango.cairo_close_path(cairo);
    pango.cairo_fill(cairo);
}

PixelView MenuPainter::picture() const
{
    auto const& pango = m_tools->pango;
    auto* const surface = m_tools->surface.get();
    pango.cairo_surface_flush(surface);
    return { reinterpret_cast<std::uint32_t const*>(pango.cairo_image_surface_get_data(surface)),
        static_cast<std::size_t>(pango.cairo_image_surface_get_stride(surface)) / sizeof(std::uint32_t) };
}

} // namespace backends
