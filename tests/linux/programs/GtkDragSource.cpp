#include <cstdlib>
#include <gtk/gtk.h>

// A window of GTK from which the files of the command line can be dragged: GtkDragSource TIMES FILE...
// The list of files is handed over that many times, for a long one.

namespace {

struct Files {
    int times = 1;
    char** names = nullptr;
};

void handOver(GtkWidget*, GdkDragContext*, GtkSelectionData* selection, guint, guint, gpointer context)
{
    auto const& files = *static_cast<Files const*>(context);
    auto* const addresses = g_ptr_array_new_with_free_func(g_free);
    for (int i = 0; i < files.times; ++i) {
        for (auto** name = files.names; *name; ++name)
            g_ptr_array_add(addresses, g_filename_to_uri(*name, nullptr, nullptr));
    }
    g_ptr_array_add(addresses, nullptr);
    gtk_selection_data_set_uris(selection, reinterpret_cast<char**>(addresses->pdata));
    g_ptr_array_unref(addresses);
}

} // namespace

int main(int argc, char** argv)
{
    gtk_init(&argc, &argv);
    if (argc < 3)
        return 2;
    Files files { std::atoi(argv[1]), argv + 2 };
    auto* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "drag source");
    gtk_window_set_default_size(GTK_WINDOW(window), 200, 200);
    auto* const area = gtk_event_box_new();
    gtk_container_add(GTK_CONTAINER(window), area);
    gtk_drag_source_set(area, GDK_BUTTON1_MASK, nullptr, 0, GDK_ACTION_COPY);
    gtk_drag_source_add_uri_targets(area);
    g_signal_connect(area, "drag-data-get", G_CALLBACK(handOver), &files);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_widget_show_all(window);
    gtk_main();
    return 0;
}
