#include "tests/managers/hosts/HostApp.h"

#include "paneweld/glib.hpp"

#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

// The app in GTK 4.

namespace {

class GtkHostWindow : public HostWindow {
public:
    explicit GtkHostWindow(WindowWish wish)
        : m_wish(std::move(wish))
        , m_window(gtk_window_new())
    {
        gtk_window_set_title(GTK_WINDOW(m_window), m_wish.title.c_str());
        gtk_window_set_default_size(GTK_WINDOW(m_window), m_wish.width, m_wish.height);
        gtk_widget_add_css_class(m_window, "stranger");
        g_signal_connect(m_window, "close-request", G_CALLBACK(closeRequest), &m_wish);
        auto* const keys = gtk_event_controller_key_new();
        g_signal_connect(keys, "key-pressed", G_CALLBACK(keyPressed), &m_wish);
        gtk_widget_add_controller(m_window, keys);
    }
    ~GtkHostWindow() override { gtk_window_destroy(GTK_WINDOW(m_window)); }

    std::uint32_t realize() override
    {
        gtk_widget_realize(m_window);
        gdk_display_sync(gtk_widget_get_display(m_window));
        return static_cast<std::uint32_t>(gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(m_window))));
    }
    void show() override { gtk_window_present(GTK_WINDOW(m_window)); }
    void hide() override { gtk_widget_set_visible(m_window, FALSE); }

private:
    static gboolean closeRequest(GtkWindow*, gpointer wish)
    {
        static_cast<WindowWish*>(wish)->askedToClose();
        return TRUE;
    }
    static gboolean keyPressed(GtkEventControllerKey*, guint, guint, GdkModifierType, gpointer wish)
    {
        static_cast<WindowWish*>(wish)->gotKey();
        return FALSE;
    }

    WindowWish m_wish;
    GtkWidget* m_window;
};

struct Running {
    HostApp* app = nullptr;
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
};

gboolean readCommands(gint, GIOCondition, gpointer running)
{
    auto const& self = *static_cast<Running*>(running);
    if (!self.app->readCommands())
        g_main_loop_quit(self.loop);
    return G_SOURCE_CONTINUE;
}

gboolean destroyClosed(gpointer running)
{
    static_cast<Running*>(running)->app->destroyClosed();
    return G_SOURCE_REMOVE;
}

void paintStrangersBlue()
{
    auto* const style = gtk_css_provider_new();
    gtk_css_provider_load_from_data(style, ".stranger { background: #0000ff; }", -1);
    gtk_style_context_add_provider_for_display(
        gdk_display_get_default(), GTK_STYLE_PROVIDER(style), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(style);
}

} // namespace

int main(int argc, char** argv)
{
    gdk_set_allowed_backends("x11");
    gtk_init();
    paintStrangersBlue();
    Running running;
    HostApp app(argc, argv, [&](WindowWish wish) {
        wish.askedToClose = [told = wish.askedToClose, &running] {
            told();
            g_idle_add(destroyClosed, &running);
        };
        return std::make_unique<GtkHostWindow>(std::move(wish));
    });
    running.app = &app;
    paneweld::GlibLoop const loop(app.host());
    g_unix_fd_add(0, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), readCommands, &running);
    g_main_loop_run(running.loop);
    return 0;
}
