#pragma once

#include "backends/linux/dbus/BusReturn.h"
#include "backends/linux/dbus/DBusMenu.h"
#include "backends/linux/dbus/StatusNotifierItem.h"
#include "platform/appkit/NSStatusBarButton.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class NSImage;
class NSMenu;
} // namespace platform

namespace backends {

// A status item that the desktop's panel draws, menu and all. Presses reach the button as the panel tells them; a menu
// that the button is to show is handed to the panel. Without a bus it is an item that nobody sees, until there is one.
// Main thread only.
class DBusStatusItem {
public:
    struct Options {
        std::string busAddress;
        // A connection to it, where there is one already.
        std::unique_ptr<Bus> bus {};
        StatusNotifierItem::Identity identity;
        // What an image looks like in the sizes that panels have. Empty, when it cannot be drawn (yet).
        std::function<std::vector<IconPixmap>(platform::NSImage const&)> drawIcon {};
        // A name of the icon theme, for an item that has nothing else to show.
        std::string standInIconName {};
        // Just before a press, with its place where the desktop tells it.
        std::function<void(std::optional<StatusNotifierItem::Place>)> willPress {};
        // Before anything that the user does with the item, with the desktop's activation token for it (xdg-activation)
        // or an empty one.
        std::function<void(std::string const& activationToken)> userDidAct {};
        // Called from the loop.
        std::function<void()> stateDidChange {};
    };
    DBusStatusItem(EventLoop& loop, Options options, std::shared_ptr<platform::NSStatusBarButton> button,
        platform::OSLog const& log);
    ~DBusStatusItem();
    DBusStatusItem(DBusStatusItem const&) = delete;
    DBusStatusItem& operator=(DBusStatusItem const&) = delete;

    StatusWatcher::State state() const;
    void showMenu(std::shared_ptr<platform::NSMenu> const& menu);
    // Draws the icon again: the button has another image, or the same one can look different now.
    void redraw();

private:
    std::optional<platform::NSError> connect(std::string const& address);
    void serve(std::unique_ptr<Bus> bus);
    void connectAgain();
    void busDidGo();
    void press(std::optional<StatusNotifierItem::Place> place, std::string const& activationToken);
    void tellOfUser(std::string const& activationToken);
    StatusIcon icon() const;

    EventLoop& m_loop;
    Options m_options;
    std::shared_ptr<platform::NSStatusBarButton> m_button;
    platform::OSLog m_log;
    std::shared_ptr<platform::NSMenu> m_shownMenu;
    BusReturn m_return;
    // What there is of it on one connection. Absent without a bus.
    std::unique_ptr<Bus> m_bus;
    BusSlot m_ready, m_lost;
    std::unique_ptr<DBusMenu> m_menu;
    std::unique_ptr<StatusNotifierItem> m_item;
};

} // namespace backends
