#pragma once

#include "examples/brainstorm/Desktop.h"
#include "examples/brainstorm/Gtk.h"

#include <functional>
#include <memory>
#include <string>

namespace ideas {

// One top-level window of the app, tagged for the plug-in by what its title holds before it is first shown.
class HostWindow {
public:
    virtual ~HostWindow();
    HostWindow(HostWindow const&) = delete;
    HostWindow& operator=(HostWindow const&) = delete;

    std::string const& id() const { return m_identifier->id(); }
    bool is(std::string const& type) const { return m_identifier->type() == type; }

    // Shows the window, or brings it to the front when it is shown already.
    void present();
    // The same when the user asked for it elsewhere, while another app was in front.
    void bringForward();
    void close();

    // Called once, when the window has gone, whoever closed it. The window object may be deleted from the next turn
    // of the loop on.
    void onClosed(std::function<void()> handler) { m_onClosed = std::move(handler); }

protected:
    HostWindow(Desktop& desktop, std::shared_ptr<paneweld::WindowIdentifier> identifier);

    Desktop& desktop() const { return m_desktop; }
    // Null once the window has gone.
    GtkWidget* widget() const { return m_window; }
    // Ctrl with a key, pressed anywhere in the window.
    void addShortcut(guint key, std::function<void()> action);

    // After the plug-in has read the identifier and the window is mapped, once.
    virtual void didAppear() { }
    virtual void willResize(paneweld::BrainstormWindowResize const&) { }
    virtual void didResize(paneweld::BrainstormWindowResize const&) { }
    virtual void didEndLiveResize(paneweld::BrainstormWindowDidEndLiveResize const&) { }

private:
    void listen();
    void appearWhenReady();

    Desktop& m_desktop;
    std::shared_ptr<paneweld::WindowIdentifier> m_identifier;
    GtkWidget* m_window;
    std::function<void()> m_onClosed;
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
    bool m_isLoaded = false;
    bool m_isMapped = false;
    bool m_hasAppeared = false;
};

} // namespace ideas
