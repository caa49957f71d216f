#pragma once

#include "platform/appkit/NSStatusBar.h"
#include "platform/appkit/NSStatusItem.h"
#include "tests/linux/LinuxTest.h"
#include "tests/linux/RecordedMenu.h"
#include "tests/linux/SessionBus.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// A status item on a desktop of X, with a view over its button that writes down what it is told: "left", "right", and
// what is dropped; and shows a menu on the right button as an app does.
class TrayFixture : public LinuxTest, protected RecordedMenu {
protected:
    ~TrayFixture() override;

    // Server, bus, and people.
    void startDesktop(SessionBus::Services services = SessionBus::Services::None,
        std::vector<std::string> const& serverArguments = {});
    // The backend and its item, with the icon of the app.
    void startItem();
    platform::StatusItemPlace place() const { return backend->statusBar()->place(); }
    bool comesTo(platform::StatusItemPlace wanted);
    // As pumpUntil, with whatever else there is on the desktop.
    virtual bool pump(std::function<bool()> condition) { return pumpUntil(std::move(condition)); }

    void click(Geometry const& icon, int button);
    void strike(xcb_keycode_t key);
    // The item's window, wherever it is; none when it has none, or nobody can see it.
    xcb_window_t icon();
    // The menu that is open, if one is.
    xcb_window_t openMenu();

    std::unique_ptr<SessionBus> bus;
    std::shared_ptr<platform::NSStatusItem> item;
    std::vector<std::string> actions;
    std::vector<platform::StatusItemPlace> places;
    int dragsEntered = 0;
    std::optional<std::vector<std::string>> dropped;

private:
    class View;
    void didChoose(std::string const& action) override { actions.push_back(action); }
    // The first one that can be seen, by its class, anywhere on the screen.
    xcb_window_t find(std::string const& windowClass);
};

} // namespace paneweld_tests
