#include "tests/linux/RecordedMenu.h"

#include <utility>

namespace paneweld_tests {

using platform::NSMenuItem;

RecordedMenu::RecordedMenu(std::function<void(std::string const&)> didChoose)
    : m_didChoose(std::move(didChoose))
{
}

std::shared_ptr<NSMenuItem> RecordedMenu::add(
    std::string const& title, std::string const& action, std::string const& key)
{
    m_target->description.methods[action]
        = [didChoose = m_didChoose, action](platform::NSObject&, platform::List const&) {
              didChoose(action);
              return platform::Value();
          };
    auto made = NSMenuItem::create(title, action, key);
    made->setTarget(m_target);
    m_menu->addItem(made);
    return made;
}

void RecordedMenu::addSeparator() { m_menu->addItem(NSMenuItem::separatorItem()); }

void RecordedMenu::fill()
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
