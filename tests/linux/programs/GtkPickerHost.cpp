#include "paneweld/glib.hpp"

#include "platform/foundation/Bundle.h"

#include <cstdio>
#include <gtk/gtk.h>
#include <memory>
#include <optional>
#include <vector>

// A small host of GTK: GtkPickerHost FRAMEWORK. Its window changes its colour all the time; a click on it asks for
// folders. Writes "live" or "frozen" at the start and a line for each answer, with the chosen addresses.

namespace {

struct PickerHost {
    std::unique_ptr<paneweld::Host> host {};
    std::unique_ptr<paneweld::GlibLoop> loop {};
    std::shared_ptr<platform::NSObject> controller {};
    int paintings = 0;
};

gboolean draw(GtkWidget*, cairo_t* cairo, gpointer context)
{
    auto& self = *static_cast<PickerHost*>(context);
    cairo_set_source_rgb(cairo, ++self.paintings % 2, 0, 1);
    cairo_paint(cairo);
    return TRUE;
}

gboolean tick(gpointer window)
{
    gtk_widget_queue_draw(GTK_WIDGET(window));
    return G_SOURCE_CONTINUE;
}

void answered(std::optional<std::vector<platform::URL>> const& urls)
{
    std::printf("answer");
    for (auto const& url : urls.value_or(std::vector<platform::URL> {}))
        std::printf(" %s", url.absoluteString().c_str());
    std::printf("\n");
    std::fflush(stdout);
}

// From inside the toolkit's own event, as a button would.
gboolean click(GtkWidget*, GdkEvent*, gpointer)
{
    platform::NotificationCenter::defaultCenter().post({ paneweld::NotificationName::requestFileAccess(), nullptr,
        paneweld::RequestFileAccess { answered }.userInfo() });
    return TRUE;
}

} // namespace

int main(int argc, char** argv)
{
    gtk_init(&argc, &argv);
    if (argc != 2)
        return 2;
    PickerHost self;
    auto started = paneweld::Host::start({ .bundleIdentifier = "com.example.Picker", .frameworkPath = argv[1] });
    if (!started)
        return 1;
    self.host = started.take();
    self.loop = std::make_unique<paneweld::GlibLoop>(*self.host);
    self.controller = paneweld::NSBundle::appKitController(*self.host->plugin());
    bool const isLive = self.host->modalWindows() == paneweld::ModalWindows::Live;
    std::printf("%s\n", self.controller && isLive ? "live" : "frozen");
    std::fflush(stdout);

    auto* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "picker host");
    gtk_window_set_default_size(GTK_WINDOW(window), 60, 200);
    gtk_window_move(GTK_WINDOW(window), 1200, 100);
    gtk_widget_set_app_paintable(window, TRUE);
    gtk_widget_add_events(window, GDK_BUTTON_PRESS_MASK);
    g_signal_connect(window, "draw", G_CALLBACK(draw), &self);
    g_signal_connect(window, "button-press-event", G_CALLBACK(click), nullptr);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    constexpr guint paceMilliseconds = 10;
    g_timeout_add(paceMilliseconds, tick, window);
    gtk_widget_show_all(window);
    gtk_main();
    return 0;
}
