#pragma once

#include "platform/foundation/Result.h"

#include <pango/pangocairo.h>

namespace backends {

// The functions of pango and cairo that text is drawn with, by their own names. They are called through this table
// because the libraries are loaded late.
struct PangoLibrary {
    // The first time in a process it takes some milliseconds, later it only looks the names up. Any thread.
    static platform::Result<PangoLibrary> load();

#define PANEWELD_PANGO_FUNCTIONS(function)                                                                             \
    function(g_object_unref);                                                                                          \
    function(cairo_create);                                                                                            \
    function(cairo_destroy);                                                                                           \
    function(cairo_set_source_rgb);                                                                                    \
    function(cairo_fill);                                                                                              \
    function(cairo_rectangle);                                                                                         \
    function(cairo_new_sub_path);                                                                                      \
    function(cairo_arc);                                                                                               \
    function(cairo_close_path);                                                                                        \
    function(cairo_move_to);                                                                                           \
    function(cairo_line_to);                                                                                           \
    function(cairo_image_surface_create);                                                                              \
    function(cairo_image_surface_get_data);                                                                            \
    function(cairo_image_surface_get_stride);                                                                          \
    function(cairo_surface_flush);                                                                                     \
    function(cairo_surface_destroy);                                                                                   \
    function(pango_cairo_font_map_new);                                                                                \
    function(pango_cairo_context_set_resolution);                                                                      \
    function(pango_cairo_show_layout);                                                                                 \
    function(pango_font_map_create_context);                                                                           \
    function(pango_font_description_from_string);                                                                      \
    function(pango_font_description_free);                                                                             \
    function(pango_font_description_get_size);                                                                         \
    function(pango_font_description_get_size_is_absolute);                                                             \
    function(pango_font_description_set_size);                                                                         \
    function(pango_layout_new);                                                                                        \
    function(pango_layout_set_text);                                                                                   \
    function(pango_layout_set_font_description);                                                                       \
    function(pango_layout_set_single_paragraph_mode);                                                                  \
    function(pango_layout_set_ellipsize);                                                                              \
    function(pango_layout_set_width);                                                                                  \
    function(pango_layout_get_pixel_size)

#define PANEWELD_DECLARE(name) decltype(&::name) name = nullptr
    PANEWELD_PANGO_FUNCTIONS(PANEWELD_DECLARE);
#undef PANEWELD_DECLARE
};

} // namespace backends
