#pragma once

// Carries a Host in a GLib main loop, and so in every toolkit that runs on one. The library itself does not link
// GLib: a host that includes this file does.

#include "paneweld/host.hpp"

#include <glib-unix.h>
#include <glib.h>

namespace paneweld {

// The place of a Host in a main loop: from construction to destruction the loop waits for the host's descriptor and
// dispatches what is due. Keep it as long as the loop runs, and end it before the Host. Main thread only.
class [[nodiscard]] GlibLoop {
public:
    // Absent context: the default one, which is the one that GTK runs. Nothing here fails.
    explicit GlibLoop(Host& host, GMainContext* context = nullptr)
        : m_host(host)
        , m_source(g_unix_fd_source_new(host.pollableDescriptor(), G_IO_IN))
    {
        g_source_set_name(m_source, "Paneweld");
        // The priority of the toolkit's own events: a drag must not starve the animation beside it, nor the other way.
        g_source_set_priority(m_source, G_PRIORITY_DEFAULT);
        // A source with a descriptor passes it to its callback, which therefore has another shape than others.
        g_source_set_callback(m_source, G_SOURCE_FUNC(&readable), this, nullptr);
        // A dialog that is waited for inside dispatch runs the loop, and still needs us.
        g_source_set_can_recurse(m_source, TRUE);
        g_source_attach(m_source, context);
        m_host.setNestedIteration([context] { g_main_context_iteration(context, TRUE); });
        // What became due before the loop knew of us makes no descriptor readable any more.
        m_host.dispatch();
    }

    ~GlibLoop()
    {
        m_host.setNestedIteration({});
        g_source_destroy(m_source);
        g_source_unref(m_source);
    }

    GlibLoop(GlibLoop const&) = delete;
    GlibLoop& operator=(GlibLoop const&) = delete;

private:
    static gboolean readable(gint, GIOCondition, gpointer self) noexcept
    {
        static_cast<GlibLoop*>(self)->m_host.dispatch();
        return G_SOURCE_CONTINUE;
    }

    Host& m_host;
    GSource* m_source;
};

} // namespace paneweld
