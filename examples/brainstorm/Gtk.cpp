#include "examples/brainstorm/Gtk.h"

#include <gdk/gdkx.h>

namespace ideas {

void later(std::function<void()> action, unsigned milliseconds)
{
    auto const run = [](gpointer data) noexcept -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
    };
    auto const destroy = [](gpointer data) noexcept { delete static_cast<std::function<void()>*>(data); };
    auto* const data = new std::function<void()>(std::move(action));
    if (milliseconds > 0)
        g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, run, data, destroy);
    else
        g_idle_add_full(G_PRIORITY_DEFAULT, run, data, destroy);
}

std::uint32_t xidOf(GtkWidget* window)
{
    return static_cast<std::uint32_t>(gdk_x11_window_get_xid(gtk_widget_get_window(window)));
}

void bringForward(GtkWidget* window)
{
    // The toolkit's own time is that of the last event in this app, which may be long ago.
    auto const time = gdk_x11_get_server_time(gtk_widget_get_window(window));
    gtk_window_present_with_time(GTK_WINDOW(window), time);
}

void keepContentAtBottom(GtkWidget* window)
{
    XSetWindowAttributes attributes {};
    attributes.bit_gravity = SouthWestGravity;
    // What is uncovered is see-through until it is painted.
    attributes.background_pixel = 0;
    auto* const display = gdk_x11_display_get_xdisplay(gtk_widget_get_display(window));
    XChangeWindowAttributes(display, xidOf(window), CWBitGravity | CWBackPixel, &attributes);
}

PaintsWithNews::PaintsWithNews(GtkWidget* window)
    : m_surface(GDK_WINDOW(g_object_ref(gtk_widget_get_window(window))))
    , m_window(window)
{
    gdk_window_freeze_updates(m_surface.get());
}

PaintsWithNews::~PaintsWithNews() { gdk_window_thaw_updates(m_surface.get()); }

void PaintsWithNews::paint(GdkEventConfigure& news)
{
    GTK_WIDGET_GET_CLASS(m_window)->configure_event(m_window, &news);
    gtk_container_check_resize(GTK_CONTAINER(m_window));
    gdk_window_thaw_updates(m_surface.get());
    // Out of favour since the toolkit paints by its clock, and still the only way past it.
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gdk_window_process_updates(m_surface.get(), TRUE);
    G_GNUC_END_IGNORE_DEPRECATIONS
    gdk_window_freeze_updates(m_surface.get());
}

GtkWidget* makeLabel(std::string const& text, char const* styleClass)
{
    auto* const label = gtk_label_new(text.c_str());
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_line_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
    addClass(label, styleClass);
    return label;
}

GtkWidget* makeLine(std::string const& text, char const* styleClass)
{
    auto* const label = makeLabel(text, styleClass);
    gtk_label_set_line_wrap(GTK_LABEL(label), FALSE);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    return label;
}

GtkWidget* makeIconButton(char const* iconName, char const* tooltip)
{
    auto* const button = gtk_button_new_from_icon_name(iconName, GTK_ICON_SIZE_BUTTON);
    gtk_widget_set_tooltip_text(button, tooltip);
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    gtk_widget_set_can_focus(button, FALSE);
    addClass(button, "icon-button");
    return button;
}

GtkWidget* makeBox(GtkOrientation orientation, int spacing, char const* styleClass)
{
    auto* const box = gtk_box_new(orientation, spacing);
    if (styleClass)
        addClass(box, styleClass);
    return box;
}

} // namespace ideas
