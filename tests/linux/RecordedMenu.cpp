#include "tests/linux/RecordedMenu.h"

namespace paneweld_tests {

using platform::NSMenuItem;

std::shared_ptr<NSMenuItem> RecordedMenu::add(
    std::string const& title, std::string const& action, std::string const& key)
{
    target->description.methods[action] = [this, action](platform::NSObject&, platform::List const&) {
        didChoose(action);
        return platform::Value();
    };
    auto made = NSMenuItem::create(title, action, key);
    made->setTarget(target);
    menu->addItem(made);
    return made;
}

void RecordedMenu::fillMenu()
{
    add("Open", "open");
    add("New", "new");
    add("Settings", "settings", ",");
    addSeparator();
    add("Check for Updates", "update");
    addSeparator();
    add("Quit", "quit", "q");
}

} // namespace paneweld_tests
