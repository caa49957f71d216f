#pragma once

#include "backends/linux/dbus/Bus.h"
#include "backends/linux/dbus/StatusWatcher.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// One size of an icon: ARGB32, four bytes a pixel with alpha first, rows from the top.
struct IconPixmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes {};
    bool operator==(IconPixmap const&) const = default;
};

// What the desktop can draw. It takes the icon theme's picture of the name, from the folder too where one is given,
// and the pixmaps when there is no such picture or no name.
struct StatusIcon {
    std::string name {};
    std::string themePath {};
    std::vector<IconPixmap> pixmaps {};
    bool operator==(StatusIcon const&) const = default;
};

// An item in the desktop's panel, drawn by the desktop: org.kde.StatusNotifierItem. The desktop says what the user does
// with it. Main thread only.
class StatusNotifierItem {
public:
    struct Identity {
        // The same from one start of the app to the next: reverse-DNS.
        std::string id;
        // For people.
        std::string title;
        // Of the items of this process, from 1.
        int number = 1;
        // The object that serves the menu, on the same connection.
        std::string menuPath;
    };
    // In pixels of the X screen. Absent when the desktop does not tell; some say 0, 0 then.
    struct Place {
        int x = 0;
        int y = 0;
    };
    // Called from the loop.
    struct Observer {
        // The left button. The token is the desktop's permission to bring a window forward (xdg-activation), and may
        // be empty.
        std::function<void(std::optional<Place>, std::string const& activationToken)> didActivate {};
        // The right button, where the desktop does not draw menus.
        std::function<void(std::optional<Place>)> didAskForMenu {};
        std::function<void()> stateDidChange {};
    };

    // The connection is this item's alone: what shows items expects each at the same path.
    StatusNotifierItem(Bus& bus, EventLoop& loop, Identity identity, platform::OSLog log, Observer observer);

    StatusWatcher::State state() const;
    // It is drawn when somebody looks, and again by another call; who has looked is told of a change.
    void setIcon(std::function<StatusIcon()> draw);
    void setTitle(std::string title);

private:
    BusInterface interface();
    void makeKnown(EventLoop& loop, bool hasName);
    void activate(std::optional<Place> place);
    StatusIcon const& icon();
    StatusIcon drawn() const;
    void emit(std::string const& signal);

    Bus& m_bus;
    Identity m_identity;
    platform::OSLog m_log;
    Observer m_observer;
    std::function<StatusIcon()> m_draw;
    // As somebody has seen it. Absent until then.
    std::optional<StatusIcon> m_icon;
    std::string m_activationToken;
    std::string m_name;
    BusSlot m_object;
    BusSlot m_nameQuestion;
    // Absent until the item has a name.
    std::optional<StatusWatcher> m_watcher;
};

} // namespace backends
