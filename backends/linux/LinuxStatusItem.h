#pragma once

#include "backends/linux/dbus/DBusStatusItem.h"
#include "backends/linux/host/IconRenderings.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/X11TrayIcon.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/appkit/NSStatusItem.h"
#include "platform/dispatch/Clock.h"
#include "platform/log/OSLog.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

class X11World;

// A status item on a Linux desktop: a window in the X screen's tray where there is one that takes windows, because only
// a window can take drops, and else an item of the panel on the session bus. Never both: one ends before the other
// begins. Main thread only.
class LinuxStatusItem final : public platform::NSStatusItem {
public:
    struct Options {
        std::string busAddress {};
        // A connection to it, where there is one already.
        std::unique_ptr<Bus> bus {};
        StatusNotifierItem::Identity identity {};
        // The pictures that there are of an image, smallest first; none, when it cannot be drawn.
        std::function<std::vector<IconRendering>(platform::NSImage const&)> renderings {};
        std::string standInIconName {};
        // What the user does with the item where the X server is not told, with the desktop's activation token for it
        // or an empty one. Before anything comes of it.
        std::function<void(std::string const& activationToken)> userDidAct {};
        // Null without an X server.
        X11World* x11 = nullptr;
        // A tray that has kept the icon for so long may put it out as often as one that is new.
        platform::Seconds longStay { 30 };
        // Just before a press: the item on the X screen, or the point of the press. Absent when nobody tells.
        std::function<void(std::optional<PixelRect> const&)> willPress {};
        // Called from the loop.
        std::function<void()> placeDidChange {};
        std::function<void()> didEnd {};
    };
    LinuxStatusItem(EventLoop& loop, Options options, platform::OSLog log);
    ~LinuxStatusItem() override;
    LinuxStatusItem(LinuxStatusItem const&) = delete;
    LinuxStatusItem& operator=(LinuxStatusItem const&) = delete;

    std::shared_ptr<platform::NSStatusBarButton> button() const override;

    platform::StatusItemPlace place() const;
    // Draws the icon again: the same image can look different now.
    void redraw();
    // The X screen's tray is another one, or looks otherwise.
    void trayDidChange();

private:
    class Button;

    bool wantsTray() const;
    void update();
    void dock();
    void leaveTray();
    void giveUpTray();
    void trayDidPutOut();
    void waitForTray();
    void connectBus();
    void showMenu(std::shared_ptr<platform::NSMenu> const& menu);
    void handlePress(X11TrayIcon::Press const& press);
    std::vector<IconRendering> renderings() const;
    BlendedPicture trayPicture(int side) const;
    std::vector<IconPixmap> panelPictures(platform::NSImage const& image) const;
    void notify();

    EventLoop& m_loop;
    Options m_options;
    platform::OSLog m_log;
    std::shared_ptr<Button> m_button;
    std::unique_ptr<DBusStatusItem> m_bus;
    std::unique_ptr<X11TrayIcon> m_icon;
    X11TrayIcon::Press m_press;
    // The tray that has the icon or was asked to take it, and its look then.
    xcb_window_t m_tray = XCB_WINDOW_NONE;
    X11Tray::Look m_look;
    // One that did not take it, or did not keep it.
    xcb_window_t m_refusingTray = XCB_WINDOW_NONE;
    int m_timesPutOut = 0;
    platform::Seconds m_dockedSince { 0 };
    LoopSource m_wait;
};

} // namespace backends
