#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace backends {

// The tray of an X screen: the one window that takes the icons of running apps (System Tray Protocol 0.4), as it comes,
// goes and hands over, and what it says of how icons should look. Main thread only.
class X11Tray {
public:
    // Where the tray says nothing: the protocol's own assumption, or absent.
    struct Look {
        bool isVertical = false;
        // That icons should have; 0 for the root window's.
        xcb_visualid_t visual = 0;
        // Of the text beside the icons: red, green and blue, a byte each.
        std::optional<std::uint32_t> foreground {};

        bool operator==(Look const&) const = default;
    };

    explicit X11Tray(Connection& connection);

    // Asks; the answers come with the next two rounds of replies. didChange is called when another window owns the
    // tray or its look is another one, once all that is known of it is there.
    void start();
    void setObserver(std::function<void()> didChange) { m_didChange = std::move(didChange); }
    void handle(xcb_generic_event_t const& event);
    void connectionWasLost();

    // Who takes icons. None when nobody does.
    xcb_window_t owner() const { return m_owner.window; }
    // The process that it belongs to, by the server's word.
    std::optional<std::uint32_t> ownerProcess() const { return m_owner.process; }
    Look const& look() const { return m_owner.look; }

    // Asks the owner to take the window.
    void askForDock(xcb_window_t icon);

private:
    struct Owner {
        xcb_window_t window = XCB_WINDOW_NONE;
        std::optional<std::uint32_t> process {};
        Look look {};

        bool operator==(Owner const&) const = default;
    };

    void readOwner();
    void follow(xcb_window_t window);
    void handleOwnerEvent(xcb_generic_event_t const& event);
    void read(xcb_window_t window);
    void set(Owner owner);

    Connection& m_connection;
    std::function<void()> m_didChange;
    Owner m_owner;
    // The one that is watched, of which the answers may be on their way still.
    xcb_window_t m_followed = XCB_WINDOW_NONE;
    WindowEvents::Registration m_events;
};

} // namespace backends
