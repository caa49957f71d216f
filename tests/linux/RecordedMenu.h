#pragma once

#include "platform/appkit/NSMenu.h"
#include "platform/runtime/Class.h"

#include <memory>
#include <string>

namespace paneweld_tests {

// For tests of what shows menus: a menu whose items say their action when they are chosen.
class RecordedMenu {
protected:
    virtual ~RecordedMenu() = default;
    virtual void didChoose(std::string const& action) = 0;

    std::shared_ptr<platform::NSMenuItem> add(
        std::string const& title, std::string const& action, std::string const& key = {});
    void addSeparator() { menu->addItem(platform::NSMenuItem::separatorItem()); }
    // Open, New, Settings (","), a line, Check for Updates, a line, Quit ("q"): "open", "new", "settings", "update",
    // "quit".
    void fillMenu();

    struct Target : platform::NSObject {
        platform::Class const* classDescription() const override { return &description; }
        platform::Class description;
    };
    std::shared_ptr<platform::NSMenu> menu = std::make_shared<platform::NSMenu>();
    std::shared_ptr<Target> target = std::make_shared<Target>();
};

} // namespace paneweld_tests
