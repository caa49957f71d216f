#include "examples/brainstorm/Illustration.h"

#include <array>
#include <cmath>

namespace ideas {

namespace {

constexpr int width = 320;
constexpr int height = 230;

struct Color {
    double red;
    double green;
    double blue;
};

constexpr std::array<Color, 3> tints { { { 0.98, 0.55, 0.36 }, { 0.36, 0.60, 0.95 }, { 0.32, 0.74, 0.57 } } };

void roundedRectangle(cairo_t* cr, double x, double y, double w, double h, double radius)
{
    double const quarter = std::acos(-1.0) / 2;
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - radius, y + radius, radius, -quarter, 0);
    cairo_arc(cr, x + w - radius, y + h - radius, radius, 0, quarter);
    cairo_arc(cr, x + radius, y + h - radius, radius, quarter, 2 * quarter);
    cairo_arc(cr, x + radius, y + radius, radius, 2 * quarter, 3 * quarter);
    cairo_close_path(cr);
}

void drawScreen(cairo_t* cr)
{
    cairo_pattern_t* const sky = cairo_pattern_create_linear(0, 0, width, height);
    cairo_pattern_add_color_stop_rgb(sky, 0, 0.40, 0.36, 0.80);
    cairo_pattern_add_color_stop_rgb(sky, 1, 0.93, 0.55, 0.55);
    roundedRectangle(cr, 0, 0, width, height, 18);
    cairo_set_source(cr, sky);
    cairo_fill(cr);
    cairo_pattern_destroy(sky);
}

void drawWindow(cairo_t* cr)
{
    roundedRectangle(cr, 44, 34, 232, 128, 10);
    cairo_set_source_rgba(cr, 1, 1, 1, 0.35);
    cairo_fill(cr);
    for (int line = 0; line < 4; ++line) {
        roundedRectangle(cr, 62, 54 + line * 18, line % 2 ? 140 : 190, 7, 3.5);
        cairo_fill(cr);
    }
}

void drawPanel(cairo_t* cr, std::size_t ideas, bool isPinned)
{
    double const top = 170 - 26.0 * static_cast<double>(ideas);
    double const panelHeight = 204 - top;
    roundedRectangle(cr, 70, top + 3, 180, panelHeight, 10);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.18);
    cairo_fill(cr);
    roundedRectangle(cr, 70, top, 180, panelHeight, 10);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_fill(cr);

    for (std::size_t index = 0; index < ideas; ++index) {
        double const y = top + 18 + 26.0 * static_cast<double>(index);
        auto const& tint = tints[index % tints.size()];
        cairo_set_source_rgb(cr, tint.red, tint.green, tint.blue);
        cairo_arc(cr, 88, y, 5, 0, 4 * std::acos(0.0));
        cairo_fill(cr);
        cairo_set_source_rgb(cr, 0.82, 0.82, 0.87);
        roundedRectangle(cr, 102, y - 4, 112 - 22.0 * static_cast<double>(index % 2), 8, 4);
        cairo_fill(cr);
    }

    // The entry, with its caret.
    cairo_set_source_rgb(cr, 0.40, 0.36, 0.80);
    cairo_rectangle(cr, 86, 179, 2, 16);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.88, 0.88, 0.92);
    roundedRectangle(cr, 94, 183, 84, 8, 4);
    cairo_fill(cr);
    auto const& pin = isPinned ? tints[0] : Color { 0.85, 0.85, 0.89 };
    cairo_set_source_rgb(cr, pin.red, pin.green, pin.blue);
    cairo_arc(cr, 234, 187, isPinned ? 7 : 5, 0, 4 * std::acos(0.0));
    cairo_fill(cr);
}

void draw(cairo_t* cr, std::size_t page)
{
    drawScreen(cr);
    if (page == 2)
        drawWindow(cr);
    drawPanel(cr, page == 0 ? 0 : page == 1 ? 4 : 2, page == 2);
}

} // namespace

GtkWidget* makeIllustration(std::size_t page)
{
    auto* const area = gtk_drawing_area_new();
    gtk_widget_set_size_request(area, width, height);
    gtk_widget_set_halign(area, GTK_ALIGN_CENTER);
    connect<gboolean(cairo_t*)>(area, "draw", [page](cairo_t* cr) -> gboolean {
        draw(cr, page);
        return TRUE;
    });
    return area;
}

} // namespace ideas
