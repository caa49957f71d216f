#pragma once

#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/StatusWatcherStandIn.h"
#include "tests/linux/TrayFixture.h"
#include "tests/linux/TrayStandIn.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace paneweld_tests {

// A status item where there are a list of status items on the bus, which is shown, and trays of our own.
class Tray : public TrayFixture {
protected:
    void startDesktop(std::vector<std::string> const& serverArguments = {})
    {
        TrayFixture::startDesktop(SessionBus::Services::None, serverArguments);
        watcher = std::make_unique<StatusWatcherStandIn>(bus->address());
    }

    TrayStandIn& addTray(TrayStandIn::Manners manners = {})
    {
        trays.push_back(std::make_unique<TrayStandIn>(desktop->display(), std::move(manners)));
        return *trays.back();
    }

    bool pump(std::function<bool()> condition) override
    {
        return pumpUntil([&] {
            for (auto const& tray : trays)
                tray->handleEvents();
            return condition();
        });
    }

    // An item in a tray of our own, whose menu the right button opens.
    void pressForMenu()
    {
        startDesktop();
        addTray();
        fillMenu();
        startItem();
        ASSERT_TRUE(pump([&] { return icon() != XCB_WINDOW_NONE; }));
        click(toolkit->geometry(icon()), 3);
        user = std::make_unique<KeyboardOwner>(desktop->display());
        ASSERT_TRUE(pump([&] { return openMenu() && !user->canGrabKeyboard(); }));
    }

    std::unique_ptr<KeyboardOwner> user;
    std::unique_ptr<StatusWatcherStandIn> watcher;
    std::vector<std::unique_ptr<TrayStandIn>> trays;
};

} // namespace paneweld_tests
