#pragma once

#include "platform/appkit/NSEventModifierFlags.h"
#include "platform/runtime/NSObject.h"

#include <functional>
#include <memory>
#include <string>

namespace platform {

class NSMenu;

// One line of a menu. Main thread only.
class NSMenuItem : public NSObject {
public:
    // The selector of the action may be empty, and so may what chooses the item from the keyboard: one character
    // ("n", ","), held together with command.
    static std::shared_ptr<NSMenuItem> create(std::string title, std::string action, std::string keyEquivalent);
    static std::shared_ptr<NSMenuItem> separatorItem();

    std::string const& title() const { return m_title; }
    void setTitle(std::string title);
    bool isSeparatorItem() const { return m_isSeparator; }

    std::string const& keyEquivalent() const { return m_keyEquivalent; }
    NSEventModifierFlags keyEquivalentModifierMask() const { return m_keyEquivalentModifierMask; }
    void setKeyEquivalentModifierMask(NSEventModifierFlags mask) { m_keyEquivalentModifierMask = mask; }

    // Null for an item that opens no other menu.
    std::shared_ptr<NSMenu> const& submenu() const { return m_submenu; }
    void setSubmenu(std::shared_ptr<NSMenu> submenu) { m_submenu = std::move(submenu); }

    // Who the action is sent to, held weakly. An item without a living target that answers to its action is disabled.
    void setTarget(std::weak_ptr<NSObject> target) { m_target = std::move(target); }
    std::string const& action() const { return m_action; }
    bool isEnabled() const;

    // For the backend that shows the menu: the user chose the item. Nothing for a disabled one.
    void reportChosen();

private:
    friend class NSMenu;
    NSMenuItem() = default;

    std::string m_title;
    std::string m_action;
    std::string m_keyEquivalent;
    NSEventModifierFlags m_keyEquivalentModifierMask = NSEventModifierFlags::command;
    std::shared_ptr<NSMenu> m_submenu;
    std::weak_ptr<NSObject> m_target;
    bool m_isSeparator = false;
    // The menu that has it.
    std::function<void(NSMenuItem const&)> m_didChange;
};

} // namespace platform
