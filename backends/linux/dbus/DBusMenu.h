#pragma once

#include "backends/linux/dbus/Bus.h"
#include "backends/linux/dbus/MenuTree.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {
class NSMenu;
}

namespace backends {

// A menu that others draw: com.canonical.dbusmenu, version 3. It need not be there before somebody wants to see it:
// the first question for its lines asks for it, and is answered with all of them. Main thread only.
class DBusMenu {
public:
    // Called from the loop.
    struct Observer {
        // As long as there is no menu and one is wanted. It may call setMenu, and may drop the menu of the bus.
        std::function<void()> wasDemanded {};
        // Before an item is told that it was chosen.
        std::function<void()> willChoose {};
    };

    DBusMenu(Bus& bus, EventLoop& loop, std::string path, platform::OSLog log, Observer observer);

    // What is shown from now on. Its items are watched: one observer of a menu is ours.
    void setMenu(std::shared_ptr<platform::NSMenu> menu);
    bool hasMenu() const { return m_menu != nullptr; }
    // As the user's wish to see it, by another road than this protocol.
    void demand();

private:
    using Answer = platform::Result<platform::List>;

    BusInterface interface();
    Answer layout(platform::List const& arguments);
    Answer groupProperties(platform::List const& arguments);
    Answer property(platform::List const& arguments);
    Answer checkEvent(platform::List const& event);
    Answer checkEvents(platform::List const& arguments);
    void handleEvent(platform::List const& event);
    void handleEvents(platform::List const& arguments);
    Answer aboutToShow(platform::List const& arguments);
    Answer aboutToShowGroup(platform::List const& arguments);
    // Which of the lines have to be fetched again, and which are none.
    Answer stalePartOf(platform::List const& ids);

    // False when this object went with it.
    bool demandIsOver();
    void watch(platform::NSMenu& menu);
    void refreshSoon();
    void refresh();
    void emit(std::string const& signal, std::string const& signature, platform::List const& arguments);

    Bus& m_bus;
    EventLoop& m_loop;
    std::string m_path;
    platform::OSLog m_log;
    Observer m_observer;
    std::shared_ptr<platform::NSMenu> m_menu;
    MenuTree m_tree;
    std::uint32_t m_revision = 1;
    // That of the last layout that somebody got. 0 for none.
    std::uint32_t m_fetchedRevision = 0;
    // Somebody has asked for a line.
    bool m_hasReaders = false;
    LoopSource m_refresh;
    // Gone with this object.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
    BusSlot m_object;
};

} // namespace backends
