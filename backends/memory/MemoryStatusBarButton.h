#pragma once

#include "backends/memory/Ledger.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSPasteboard.h"
#include "platform/appkit/NSStatusBarButton.h"

#include <memory>
#include <string>
#include <vector>

namespace backends {

// A status item as the user of a memory world sees it, 22 points square, with their hand on it.
class MemoryStatusBarButton : public platform::NSStatusBarButton {
public:
    explicit MemoryStatusBarButton(Ledger& ledger);

    void leftClick();
    void rightClick();
    // Carries something over it. None where nothing is registered for drags: then nobody is asked.
    platform::NSDragOperation drag(platform::NSPasteboard& pasteboard);
    // Carries it there and lets go. True when it was taken; what is not welcome is not asked again.
    bool drop(platform::NSPasteboard& pasteboard);

    struct MenuLine {
        std::string title {};
        std::string keyEquivalent {};
        bool isEnabled = true;
        bool isSeparator = false;
        bool operator==(MenuLine const&) const = default;
    };
    // The menu that is open, or null.
    std::shared_ptr<platform::NSMenu> const& openMenu() const { return m_openMenu; }
    // The same line by line; empty when none is open.
    std::vector<MenuLine> menuLines() const;
    // Chooses a line of the open menu, counted from 0, which closes it. False for a line that cannot be chosen; the
    // menu then stays open.
    bool choose(std::size_t line);
    // Looks elsewhere.
    void closeMenu() { m_openMenu = nullptr; }

    void showMenu(std::shared_ptr<platform::NSMenu> const& menu, std::shared_ptr<platform::NSMenuItem> const& item,
        platform::Point location) override;

protected:
    void imageDidChange() override;

private:
    bool takesDrags() const;

    Ledger& m_ledger;
    std::shared_ptr<platform::NSMenu> m_openMenu;
};

} // namespace backends
