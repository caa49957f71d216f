#include "examples/brainstorm/MainMenu.h"

namespace ideas {

namespace {

using platform::NSEventModifierFlags;
using platform::NSMenu;
using platform::NSMenuItem;

// On this desktop the commands of apps hang on Control, and so do ours.
NSMenuItem command(std::string title, std::string key)
{
    return { .title = std::move(title),
        .keyEquivalent = std::move(key),
        .keyEquivalentModifierMask = NSEventModifierFlags::control };
}

} // namespace

std::shared_ptr<NSMenu> makeMainMenu()
{
    auto const ideas = std::make_shared<NSMenu>();
    ideas->addItem(command("New brainstorm", "n"));
    ideas->addItem(command("Close", "w"));
    ideas->addItem(command("Settings", ","));

    auto const menu = std::make_shared<NSMenu>();
    menu->addItem({ .title = "Ideas", .submenu = ideas });
    return menu;
}

} // namespace ideas
