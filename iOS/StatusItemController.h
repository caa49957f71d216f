#pragma once

#include "platform/appkit/Forward.h"
#include "platform/foundation/Notification.h"
#include "platform/foundation/URL.h"
#include "platform/runtime/Class.h"

#include <memory>
#include <vector>

namespace platform {
class Platform;
}

namespace paneweld {

// Puts the app's icon into the status bar and turns clicks, choices from its menu and drops into requests to the host.
// One thing it decides itself: a window that is there already is brought forward instead of asking for another one.
// Main thread only.
class StatusItemController : public platform::NSObject {
public:
    // The item is there when this returns, wherever the desktop shows such items; without a status bar there is none,
    // and the rest works all the same.
    static std::shared_ptr<StatusItemController> create(platform::Platform& platform);
    ~StatusItemController() override;

    // Dropped as long as nobody has opened the menu: it is built with the title for someone who is signed in.
    void updateMenuItemTitle(platform::Notification const& notification);

    // What the lines of the menu do; a left click is the first of them.
    void openBrainstormWindow() const;
    void forceOpenNewBrainstormWindow() const;
    void openSettingsWindow() const;
    void checkForUpdates() const;
    void quit() const;

    // "PaneweldStatusItemController" with its selectors; the maker is added where it is exported.
    static platform::Class const& runtimeClass();
    platform::Class const* classDescription() const override { return &runtimeClass(); }

private:
    explicit StatusItemController(platform::Platform& platform);

    void setUpButton();
    std::shared_ptr<platform::NSImage> icon() const;
    std::shared_ptr<platform::NSMenu> menu();
    void popUpMenu();
    void receiveDrop(std::vector<platform::URL> const& urls) const;

    // The first window of a kind that can have the keyboard; null when there is none.
    std::shared_ptr<platform::NSWindow> firstWindowOfKind(bool (*isKind)(platform::NSWindow const&)) const;

    platform::Platform& m_platform;
    std::shared_ptr<platform::NSStatusItem> m_statusItem;
    std::shared_ptr<platform::NSMenuItem> m_openMenuItem;
    std::shared_ptr<platform::NSMenu> m_menu;
};

} // namespace paneweld
