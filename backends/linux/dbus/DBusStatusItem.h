#pragma once

#include "backends/linux/dbus/DBusMenu.h"
#include "backends/linux/dbus/StatusNotifierItem.h"
#include "platform/appkit/NSStatusItem.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {
class NSImage;
}

namespace backends {

class EventLoop;

// A status item that the desktop's panel draws, menu and all. Presses reach the button as the panel tells them; a menu
// that the button is to show is handed to the panel. Without a bus it is an item that nobody sees. Main thread only.
class DBusStatusItem final : public platform::NSStatusItem {
public:
    struct Options {
        std::string busAddress;
        StatusNotifierItem::Identity identity;
        // What an image looks like in the sizes that panels have. Empty, when it cannot be drawn (yet).
        std::function<std::vector<IconPixmap>(platform::NSImage const&)> drawIcon {};
        // A name of the icon theme, for an item that has nothing else to show.
        std::string standInIconName {};
        // Just before a press that the desktop gave an activation token for (xdg-activation).
        std::function<void(std::string const& activationToken)> willActivate {};
        // Called from the loop.
        std::function<void()> stateDidChange {};
        std::function<void()> didEnd {};
    };
    DBusStatusItem(EventLoop& loop, Options options, platform::OSLog log);
    ~DBusStatusItem() override;
    DBusStatusItem(DBusStatusItem const&) = delete;
    DBusStatusItem& operator=(DBusStatusItem const&) = delete;

    std::shared_ptr<platform::NSStatusBarButton> button() const override;

    StatusWatcher::State state() const;
    // Draws the icon again: the same image can look different now.
    void redraw();

private:
    class Button;

    void connect(EventLoop& loop, platform::OSLog const& log);
    void press(std::string const& activationToken);
    StatusIcon icon() const;

    Options m_options;
    std::shared_ptr<Button> m_button;
    std::unique_ptr<Bus> m_bus;
    std::unique_ptr<DBusMenu> m_menu;
    std::unique_ptr<StatusNotifierItem> m_item;
};

} // namespace backends
