#include "examples/brainstorm/ActivityView.h"

#include <cstdio>

namespace ideas {

namespace {

struct Voice {
    char const* arrow;
    char const* tag;
};

Voice voiceOf(Activity::Origin origin)
{
    switch (origin) {
    case Activity::Origin::App:
        return { "→", "app" };
    case Activity::Origin::Plugin:
        return { "←", "plugin" };
    case Activity::Origin::WindowSystem:
        break;
    }
    return { "·", "system" };
}

void tint(GtkTextBuffer* buffer, char const* name, char const* color)
{
    gtk_text_buffer_create_tag(buffer, name, "foreground", color, nullptr);
}

} // namespace

ActivityView::ActivityView()
    : m_scroller(gtk_scrolled_window_new(nullptr, nullptr))
    , m_text(gtk_text_view_new())
{
    auto* const view = GTK_TEXT_VIEW(m_text);
    gtk_text_view_set_editable(view, FALSE);
    gtk_text_view_set_cursor_visible(view, FALSE);
    gtk_text_view_set_left_margin(view, 16);
    gtk_text_view_set_right_margin(view, 16);
    gtk_text_view_set_top_margin(view, 10);
    gtk_text_view_set_bottom_margin(view, 10);
    gtk_text_view_set_pixels_below_lines(view, 3);
    gtk_widget_set_can_focus(m_text, FALSE);
    addClass(m_text, "activity");

    // Middle tones, which read on light and on dark ground alike.
    auto* const buffer = gtk_text_view_get_buffer(view);
    tint(buffer, "app", "#3f7fd6");
    tint(buffer, "plugin", "#d9694a");
    tint(buffer, "system", "#8b8fa0");
    tint(buffer, "faint", "#8b8fa0");

    gtk_container_add(GTK_CONTAINER(m_scroller), m_text);
    // A long line is cut off; it must not make the window wider.
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(m_scroller), GTK_POLICY_EXTERNAL, GTK_POLICY_AUTOMATIC);
    auto* const adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(m_scroller));
    connect<void()>(adjustment, "changed", [adjustment] {
        gtk_adjustment_set_value(
            adjustment, gtk_adjustment_get_upper(adjustment) - gtk_adjustment_get_page_size(adjustment));
    });
}

void ActivityView::append(Activity::Entry const& entry)
{
    auto* const buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(m_text));
    auto const voice = voiceOf(entry.origin);
    char time[32];
    std::snprintf(time, sizeof time, "%7.3f  ", entry.time);

    GtkTextIter end;
    gtk_text_buffer_get_end_iter(buffer, &end);
    auto const write = [&](std::string const& text, char const* tag) {
        gtk_text_buffer_insert_with_tags_by_name(buffer, &end, text.c_str(), -1, tag, nullptr);
    };
    if (gtk_text_buffer_get_char_count(buffer) > 0)
        write("\n", "faint");
    write(time, "faint");
    write(std::string(voice.arrow) + " " + entry.name, voice.tag);
    if (!entry.details.empty())
        write("  " + entry.details, "faint");
}

} // namespace ideas
