#include "tests/managers/hosts/HostApp.h"

#include "paneweld/glib.hpp"

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

// The app in GTK 3.

namespace {

class GtkHostWindow : public HostWindow {
public:
    explicit GtkHostWindow(WindowWish wish)
        : m_wish(std::move(wish))
        , m_window(gtk_window_new(GTK_WINDOW_TOPLEVEL))
    {
        gtk_window_set_title(GTK_WINDOW(m_window), m_wish.title.c_str());
        gtk_window_set_default_size(GTK_WINDOW(m_window), m_wish.width, m_wish.height);
        gtk_widget_set_app_paintable(m_window, TRUE);
        g_signal_connect(m_window, "draw", G_CALLBACK(draw), nullptr);
        g_signal_connect(m_window, "delete-event", G_CALLBACK(deleteEvent), &m_wish);
        g_signal_connect(m_window, "key-press-event", G_CALLBACK(keyPress), &m_wish);
    }
    ~GtkHostWindow() override { gtk_widget_destroy(m_window); }

    std::uint32_t realize() override
    {
        gtk_widget_realize(m_window);
        gdk_display_sync(gtk_widget_get_display(m_window));
        return static_cast<std::uint32_t>(gdk_x11_window_get_xid(gtk_widget_get_window(m_window)));
    }
    void show() override { gtk_window_present(GTK_WINDOW(m_window)); }
    void hide() override { gtk_widget_hide(m_window); }

private:
    static gboolean draw(GtkWidget*, cairo_t* cairo, gpointer)
    {
        cairo_set_source_rgb(cairo, 0, 0, 1);
        cairo_paint(cairo);
        return TRUE;
    }
    static gboolean deleteEvent(GtkWidget*, GdkEvent*, gpointer wish)
    {
        static_cast<WindowWish*>(wish)->askedToClose();
        return TRUE;
    }
    static gboolean keyPress(GtkWidget*, GdkEvent*, gpointer wish)
    {
        static_cast<WindowWish*>(wish)->gotKey();
        return FALSE;
    }

    WindowWish m_wish;
    GtkWidget* m_window;
};

gboolean readCommands(gint, GIOCondition, gpointer app)
{
    if (!static_cast<HostApp*>(app)->readCommands())
        gtk_main_quit();
    return G_SOURCE_CONTINUE;
}

gboolean destroyClosed(gpointer app)
{
    static_cast<HostApp*>(app)->destroyClosed();
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int argc, char** argv)
{
    gdk_set_allowed_backends("x11");
    gtk_init(&argc, &argv);
    HostApp* running = nullptr;
    HostApp app(argc, argv, [&](WindowWish wish) {
        wish.askedToClose = [told = wish.askedToClose, &running] {
            told();
            g_idle_add(destroyClosed, running);
        };
        return std::make_unique<GtkHostWindow>(std::move(wish));
    });
    running = &app;
    paneweld::GlibLoop const loop(app.host());
    g_unix_fd_add(0, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), readCommands, &app);
    gtk_main();
    return 0;
}
