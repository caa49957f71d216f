#include "examples/brainstorm/HostWindow.h"

namespace ideas {

HostWindow::HostWindow(Desktop& desktop, std::shared_ptr<paneweld::WindowIdentifier> identifier)
    : m_desktop(desktop)
    , m_identifier(std::move(identifier))
    , m_window(gtk_window_new(GTK_WINDOW_TOPLEVEL))
{
    // Without a plug-in nobody would turn the tag back into a title.
    auto const title = desktop.hasPlugin() ? m_identifier->encoded() : m_identifier->localizedTitle();
    gtk_window_set_title(GTK_WINDOW(m_window), title.c_str());
    m_isLoaded = !desktop.hasPlugin();
    listen();

    // From within its own "show", when the X window exists in its right size and is not mapped yet.
    connect<void()>(m_window, "realize", [this] { m_desktop.announce(m_window); });
    connect<gboolean(GdkEvent*)>(m_window, "map-event", [this](GdkEvent*) {
        m_isMapped = true;
        appearWhenReady();
        return FALSE;
    });
    connect<void()>(m_window, "destroy", [this] {
        m_window = nullptr;
        m_desktop.stopListening(id());
        if (m_onClosed)
            m_onClosed();
    });
    addShortcut(GDK_KEY_w, [this] { close(); });
}

HostWindow::~HostWindow()
{
    m_onClosed = nullptr;
    if (m_window)
        gtk_widget_destroy(m_window);
}

void HostWindow::listen()
{
    Desktop::WindowNews news;
    news.didLoad = [this](std::string const&) {
        m_isLoaded = true;
        appearWhenReady();
    };
    news.willResize = [this](paneweld::BrainstormWindowResize const& resize) { willResize(resize); };
    news.didResize = [this](paneweld::BrainstormWindowResize const& resize) { didResize(resize); };
    news.didEndLiveResize
        = [this](paneweld::BrainstormWindowDidEndLiveResize const& resize) { didEndLiveResize(resize); };
    m_desktop.listen(id(), std::move(news));
}

void HostWindow::present()
{
    if (!m_window)
        return;
    if (gtk_widget_get_mapped(m_window)) {
        gtk_window_present(GTK_WINDOW(m_window));
        return;
    }
    gtk_widget_show(m_window);
}

void HostWindow::bringForward()
{
    present();
    if (m_window)
        ideas::bringForward(m_window);
}

void HostWindow::close()
{
    if (m_window)
        gtk_window_close(GTK_WINDOW(m_window));
}

void HostWindow::addShortcut(guint key, std::function<void()> action)
{
    connect<gboolean(GdkEventKey*)>(m_window, "key-press-event", [key, action](GdkEventKey* event) -> gboolean {
        auto const modifiers = event->state & gtk_accelerator_get_default_mod_mask();
        if (event->keyval != key || modifiers != GDK_CONTROL_MASK)
            return FALSE;
        action();
        return TRUE;
    });
}

void HostWindow::appearWhenReady()
{
    if (!m_isLoaded || !m_isMapped || m_hasAppeared)
        return;
    m_hasAppeared = true;
    // Not from inside the plug-in's own report: it is still styling the window.
    later([this, isAlive = std::weak_ptr<bool>(m_isAlive)] {
        if (!isAlive.expired() && m_window)
            didAppear();
    });
}

} // namespace ideas
