#pragma once

#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/SizeHints.h"
#include "backends/linux/x11/X11Context.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// What a toolkit and a window manager have written on a window, read whenever it changes and never waited for.
class WindowProperties {
public:
    // News that others keep. All are set before the first question.
    struct Observer {
        std::function<void(SizeHints const&)> sizeHintsWereRead;
        std::function<void(std::vector<std::uint32_t>)> decorationsWereRead;
        std::function<void(std::vector<std::uint32_t>)> statesWereRead;
        std::function<void(PixelInsets const&)> insetsWereRead;
        // Absent: it has none of its own.
        std::function<void(std::optional<std::uint32_t>)> opacityWasRead;
        // 0 withdrawn, 1 normal, 3 iconic; absent when no window manager looks after the window (ICCCM 4.1.3.1).
        std::function<void(std::optional<std::uint32_t>)> managedStateWasRead;
    };

    WindowProperties(X11Context const& context, xcb_window_t window, Observer observer);

    // The window that this belongs to: answers that come after its end are dropped, and it outlives their handling.
    void setOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    // The title as it stands, byte for byte where it is said to be UTF-8.
    std::string title() const;
    void setTitle(std::string const& title);
    // The class part of WM_CLASS, else "Window".
    std::string className() const { return m_className.value_or("Window"); }
    bool takesInput() const { return m_takesInput || m_takesFocus; }
    bool canBeAskedToClose() const { return m_canDelete; }

    // Asks for everything; done is called after all of it was answered.
    void readAll(std::function<void()> done);
    void handleChange(xcb_atom_t property);
    // One of ours was written on the window: what was asked for before is out of date, and its news comes by itself.
    void noteOwnWriting(xcb_atom_t property) { ++m_ownWritings[property]; }

private:
    void read(xcb_atom_t property, std::function<void()> done);
    void readLatest(xcb_atom_t property);
    void handleRead(xcb_atom_t property, xcb_get_property_reply_t const* reply);
    void handleNetName(xcb_get_property_reply_t const* reply);
    void handleName(xcb_get_property_reply_t const* reply);
    void handleClass(xcb_get_property_reply_t const* reply);
    void handleProtocols(xcb_get_property_reply_t const* reply);
    void handleHints(xcb_get_property_reply_t const* reply);
    void handleInsets(xcb_get_property_reply_t const* reply);
    void handleManagedState(xcb_get_property_reply_t const* reply);

    X11Context const& m_context;
    xcb_window_t m_window;
    Observer m_observer;
    std::map<xcb_atom_t, std::function<void(xcb_get_property_reply_t const*)>> m_readers;
    // Properties with a question on the way; true when they changed again meanwhile.
    std::map<xcb_atom_t, bool> m_asked;
    std::optional<std::string> m_netName;
    std::string m_name;
    std::optional<std::string> m_className;
    bool m_takesInput = true;
    bool m_takesFocus = false;
    bool m_canDelete = false;
    std::map<xcb_atom_t, std::uint32_t> m_ownWritings;
    std::weak_ptr<void> m_owner;
};

} // namespace backends
