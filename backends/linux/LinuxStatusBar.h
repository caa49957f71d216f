#pragma once

#include "backends/linux/LinuxStatusItem.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/log/OSLog.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace backends {

// The status items of this app on a Linux desktop. Main thread only.
class LinuxStatusBar final : public platform::NSStatusBar {
public:
    struct Options {
        std::string busAddress {};
        // Of the app: its identifier and its name.
        std::string id {};
        std::string title {};
        std::function<std::vector<IconRendering>(platform::NSImage const&)> renderings {};
        std::string standInIconName {};
        // As of an item.
        std::function<void(std::string const& activationToken)> userDidAct {};
        // Null without an X server.
        X11World* x11 = nullptr;
    };
    // The bus is that of the address, where it has been greeted already: it takes its time, in which a host goes on to
    // load what makes an item. Null without one; what is wrong with it is said by an item, when there is one.
    LinuxStatusBar(EventLoop& loop, Options options, platform::OSLog log, std::unique_ptr<Bus> bus);
    ~LinuxStatusBar() override;

    std::shared_ptr<platform::NSStatusItem> statusItemWithLength(double length) override;
    platform::StatusItemPlace place() const override { return m_place; }

    // Icons that could not be drawn before can be now.
    void redraw();

private:
    std::vector<std::shared_ptr<LinuxStatusItem>> livingItems() const;
    std::optional<platform::Rect> pointsOf(PixelRect const& area) const;
    void update();

    EventLoop& m_loop;
    Options m_options;
    platform::OSLog m_log;
    std::vector<std::weak_ptr<LinuxStatusItem>> m_items;
    int m_count = 0;
    std::unique_ptr<Bus> m_bus; // until an item takes it, or the loop begins without one
    LoopSource m_hangUp;
    platform::StatusItemPlace m_place = platform::StatusItemPlace::Nowhere;
    LoopSource m_update;
    // Items may outlive the bar.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace backends
