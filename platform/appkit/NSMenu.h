#pragma once

#include "platform/appkit/NSEventModifierFlags.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace platform {

class NSMenu;

// One line of a menu.
struct NSMenuItem {
    std::string title {};
    // What chooses the item from the keyboard: one character ("n", "["), or empty. UTF-8.
    std::string keyEquivalent {};
    // Held together with it.
    NSEventModifierFlags keyEquivalentModifierMask = NSEventModifierFlags::command;
    // Null for an item that opens no other menu.
    std::shared_ptr<NSMenu> submenu {};
};

// A menu as data. Main thread only.
class NSMenu {
public:
    std::vector<NSMenuItem> const& itemArray() const { return m_items; }
    void addItem(NSMenuItem item) { m_items.push_back(std::move(item)); }

private:
    std::vector<NSMenuItem> m_items;
};

} // namespace platform
