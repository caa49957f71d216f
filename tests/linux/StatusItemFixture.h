#pragma once

#include "backends/linux/LinuxStatusBar.h"
#include "tests/linux/PanelStandIn.h"
#include "tests/linux/RecordedMenu.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/StatusWatcherStandIn.h"
#include "tests/support/CollectedLog.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace paneweld_tests {

// A status item on a bus of its own, with a view over its button that writes down what it is told, and shows a menu on
// the right button as an app does: "left", "right", and the actions of chosen items.
class StatusItemTest : public ::testing::Test, protected RecordedMenu {
protected:
    using Texts = std::vector<std::string>;

    StatusItemTest();
    ~StatusItemTest() override;

    void makeBar(std::string const& address);
    // An item of the bar, with its view; "name" is what it does on the left button.
    std::shared_ptr<platform::NSStatusItem> makeItem(std::string const& name = "left");
    // A session bus, a bar and an item on it.
    void start();
    // The same with a watcher and a panel, when the item is shown.
    void startShown();
    static std::string itemName(int number = 1);
    // In the place of one that is there.
    void startWatcher(StatusWatcherStandIn::Manners manners = {});
    // Whoever hears of the item has heard of it once.
    void expectOnTheListOnce(StatusWatcherStandIn const& list);
    // A panel that knows the item, which has its name by then, whether a watcher knows it or not.
    void startPanel(int number = 1);

    // Runs the loop until the condition holds; false when it does not come in time.
    bool pumpUntil(std::function<bool()> condition);
    bool waitFor(platform::StatusItemPlace expected);
    // The answer of a question that a panel has put.
    std::string answer(std::future<std::string> question);
    // Until everything that is on its way between item and panel has come.
    void settle();
    bool isReadable(int milliseconds);
    platform::StatusItemPlace place() const { return bar->place(); }

    CollectedLog lines;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<StatusWatcherStandIn> watcher;
    std::unique_ptr<PanelStandIn> panel;
    backends::LinuxStatusBar::Options options;
    std::unique_ptr<backends::LinuxStatusBar> bar;
    std::shared_ptr<platform::NSStatusItem> item;
    Texts actions;
    std::vector<platform::StatusItemPlace> places;
    // Called with each action after it has been written down.
    std::function<void(std::string const&)> onAction;

private:
    class View;
    void act(std::string const& action);
    void didChoose(std::string const& action) override { act(action); }
};

} // namespace paneweld_tests
