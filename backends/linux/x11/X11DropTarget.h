#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/DroppedURLs.h"
#include "platform/log/OSLog.h"

#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace platform {
class NSView;
}

namespace backends {

// A window of ours as a place where other programs' drags may end (XDND, versions 3 to 5). What is dragged over it is
// dragged over its view; what is dropped is fetched first, and then the view decides. One drag at a time: whoever
// enters takes the place of the one before. Main thread only.
class X11DropTarget {
public:
    // The window is this connection's own. Announces itself on it (XdndAware) and listens until it is destroyed, which
    // may happen at any time, also while the view is asked. The connection has to outlive it. Patience is for a source
    // that owes data. What goes lost is an error in the log, with its cause.
    X11DropTarget(Connection& connection, EventLoop& loop, xcb_window_t window, std::weak_ptr<platform::NSView> view,
        platform::OSLog log, platform::Seconds patience = platform::Seconds { 5 });
    // A source whose data is on its way is told that nothing came of it.
    ~X11DropTarget();
    X11DropTarget(X11DropTarget const&) = delete;
    X11DropTarget& operator=(X11DropTarget const&) = delete;

private:
    struct Drag;

    void handle(xcb_client_message_event_t const& message);
    void handleEnter(xcb_client_message_event_t const& message);
    void handlePosition(xcb_window_t source);
    void handleLeave(xcb_window_t source);
    void handleDrop(xcb_window_t source, xcb_timestamp_t time);
    void handleDeath();
    void askTypes();
    void fetch();
    void perform(DroppedURLs::Addresses addresses, std::string const& cause);
    // The drop comes to nothing before the view has heard of it.
    void giveUp(char const* cause);
    // Ends the drag here, and all that is done for it.
    std::shared_ptr<Drag> take();
    void logLoss(std::string const& cause) const;

    Connection& m_connection;
    EventLoop& m_loop;
    xcb_window_t m_window;
    std::weak_ptr<platform::NSView> m_view;
    platform::OSLog m_log;
    platform::Seconds m_patience;
    // Null while nothing is dragged here. Shared, so that who asked about one drag sees that it is another one's turn.
    std::shared_ptr<Drag> m_drag;
    WindowEvents::Registration m_registration;
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace backends
