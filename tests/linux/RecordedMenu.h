#pragma once

#include "platform/appkit/NSMenu.h"
#include "platform/runtime/Class.h"

#include <functional>
#include <memory>
#include <string>

namespace paneweld_tests {

// A menu whose items say their action when they are chosen.
class RecordedMenu {
public:
    explicit RecordedMenu(std::function<void(std::string const&)> didChoose);

    std::shared_ptr<platform::NSMenu> const& menu() const { return m_menu; }
    std::shared_ptr<platform::NSMenuItem> add(
        std::string const& title, std::string const& action, std::string const& key = {});
    void addSeparator();
    // The seven items of a menu as it is.
    void fill();

private:
    struct Target : platform::NSObject {
        platform::Class const* classDescription() const override { return &description; }
        platform::Class description;
    };

    std::function<void(std::string const&)> m_didChoose;
    std::shared_ptr<platform::NSMenu> m_menu = std::make_shared<platform::NSMenu>();
    std::shared_ptr<Target> m_target = std::make_shared<Target>();
};

} // namespace paneweld_tests
