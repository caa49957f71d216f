#include "examples/brainstorm/MainMenu.h"

namespace ideas {

namespace {

using platform::NSEventModifierFlags;
using platform::NSMenu;
using platform::NSMenuItem;

// On this desktop the commands of apps hang on Control, and so do ours.
std::shared_ptr<NSMenuItem> command(std::string title, std::string key)
{
    auto item = NSMenuItem::create(std::move(title), {}, std::move(key));
    item->setKeyEquivalentModifierMask(NSEventModifierFlags::control);
    return item;
}

} // namespace

std::shared_ptr<NSMenu> makeMainMenu()
{
    auto const ideas = std::make_shared<NSMenu>();
    ideas->addItem(command("New brainstorm", "n"));
    ideas->addItem(command("Close", "w"));
    ideas->addItem(command("Settings", ","));

    auto const menu = std::make_shared<NSMenu>();
    auto const title = NSMenuItem::create("Ideas", {}, {});
    title->setSubmenu(ideas);
    menu->addItem(title);
    return menu;
}

} // namespace ideas
