#pragma once

// The few things that make a C toolkit comfortable in C++: signals that take closures, and references that let go.

#include <gtk/gtk.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace ideas {

struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template<typename T>
using Ref = std::unique_ptr<T, ObjectDeleter>;

struct TextDeleter {
    void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, TextDeleter>;

template<typename Signature>
struct SignalTrampoline;

template<typename Return, typename... Arguments>
struct SignalTrampoline<Return(Arguments...)> {
    using Handler = std::function<Return(Arguments...)>;

    static Return call(gpointer, Arguments... arguments, gpointer handler) noexcept
    {
        // A copy, because a handler may destroy the widget whose signal it answers, and itself with it.
        auto const copy = *static_cast<Handler*>(handler);
        return copy(arguments...);
    }
    static void destroy(gpointer handler, GClosure*) noexcept { delete static_cast<Handler*>(handler); }
};

// connect<void()>(button, "clicked", [] { ... }): the handler lives as long as the connection. The signature is the
// signal's own without the sender in front and the user data behind.
template<typename Signature>
gulong connect(gpointer instance, char const* signal, std::function<Signature> handler)
{
    using Trampoline = SignalTrampoline<Signature>;
    return g_signal_connect_data(instance, signal, reinterpret_cast<GCallback>(&Trampoline::call),
        new std::function<Signature>(std::move(handler)), &Trampoline::destroy, GConnectFlags {});
}

// A connection that ends before its instance does: a handler that does not live as long as the widget.
class Connection {
public:
    Connection(gpointer instance, gulong handler)
        : m_instance(G_OBJECT(g_object_ref(instance)))
        , m_handler(handler)
    {
    }
    ~Connection()
    {
        // A widget that was destroyed has lost its handlers already.
        if (m_instance && g_signal_handler_is_connected(m_instance.get(), m_handler))
            g_signal_handler_disconnect(m_instance.get(), m_handler);
    }
    Connection(Connection&&) = default;
    Connection& operator=(Connection&&) = delete;

private:
    Ref<GObject> m_instance;
    gulong m_handler;
};

template<typename Signature>
[[nodiscard]] Connection scopedConnect(gpointer instance, char const* signal, std::function<Signature> handler)
{
    return Connection(instance, connect<Signature>(instance, signal, std::move(handler)));
}

// Runs the action once, on the next turn of the loop or so many milliseconds later. Any thread.
void later(std::function<void()> action, unsigned milliseconds = 0);

inline void addClass(GtkWidget* widget, char const* name)
{
    gtk_style_context_add_class(gtk_widget_get_style_context(widget), name);
}

inline void setClass(GtkWidget* widget, char const* name, bool isSet)
{
    auto* const style = gtk_widget_get_style_context(widget);
    if (isSet)
        gtk_style_context_add_class(style, name);
    else
        gtk_style_context_remove_class(style, name);
}

// The X id of a realised window.
std::uint32_t xidOf(GtkWidget* window);

// Brings a shown window to the front, wherever the user is: what the user asked for elsewhere just now is no window
// that pushes itself forward, and the window manager is told so.
void bringForward(GtkWidget* window);

// What is painted in a realised window stays at its bottom while the window grows or shrinks at the top. By default the
// X server keeps it at the top, and it would jump until the next painting.
void keepContentAtBottom(GtkWidget* window);

// While somebody else moves a window's frame at the pace of the display, a tick of the toolkit's own clock may fall
// between a new size and the news of it, and paint for the old one. So as long as this lives, the window paints with
// the news of each size and at no other time.
class PaintsWithNews {
public:
    explicit PaintsWithNews(GtkWidget* window);
    ~PaintsWithNews();
    PaintsWithNews(PaintsWithNews const&) = delete;
    PaintsWithNews& operator=(PaintsWithNews const&) = delete;

    // Lets the toolkit take note of a size, lay out and paint. Call it instead of the toolkit's own handling.
    void paint(GdkEventConfigure& news);

private:
    Ref<GdkWindow> m_surface;
    GtkWidget* m_window;
};

// A left-aligned label that wraps, with a style class.
GtkWidget* makeLabel(std::string const& text, char const* styleClass);
// A left-aligned label of one line, which is cut short where there is no room.
GtkWidget* makeLine(std::string const& text, char const* styleClass);
// A flat button that shows one symbolic icon.
GtkWidget* makeIconButton(char const* iconName, char const* tooltip);
GtkWidget* makeBox(GtkOrientation orientation, int spacing, char const* styleClass = nullptr);

} // namespace ideas
