#include "backends/memory/MemoryStatusBarButton.h"

#include "backends/memory/MemoryPasteboard.h"
#include "platform/appkit/NSEvent.h"

#include <algorithm>
#include <utility>

namespace backends {

using platform::EventType;
using platform::NSDragOperation;

MemoryStatusBarButton::MemoryStatusBarButton(Ledger& ledger)
    : m_ledger(ledger)
{
    setFrame({ 0, 0, 22, 22 });
}

// Whoever is clicked may let go of the status item, and so of the button.

void MemoryStatusBarButton::leftClick()
{
    auto const self = shared_from_this();
    reportMouseDown({ EventType::LeftMouseDown });
}

void MemoryStatusBarButton::rightClick()
{
    auto const self = shared_from_this();
    reportRightMouseDown({ EventType::RightMouseDown });
}

bool MemoryStatusBarButton::takesDrags() const
{
    NSView const* topMost = this;
    while (!topMost->subviews().empty())
        topMost = topMost->subviews().back().get();
    return !topMost->registeredDraggedTypes().empty();
}

NSDragOperation MemoryStatusBarButton::drag(platform::NSPasteboard& pasteboard)
{
    MemoryDrag info(pasteboard);
    return takesDrags() ? reportDraggingEntered(info) : NSDragOperation::None;
}

bool MemoryStatusBarButton::drop(platform::NSPasteboard& pasteboard)
{
    auto const self = shared_from_this();
    if (drag(pasteboard) == NSDragOperation::None)
        return false;
    MemoryDrag info(pasteboard);
    bool const isTaken = reportPerformDragOperation(info);
    m_ledger.note(isTaken ? "drop taken" : "drop refused");
    return isTaken;
}

void MemoryStatusBarButton::imageDidChange()
{
    m_ledger.note(image() ? "statusitem image " + image()->url().absoluteString()
                + " template=" + (image()->isTemplate() ? "yes" : "no")
                          : "statusitem image none");
}

void MemoryStatusBarButton::showMenu(std::shared_ptr<platform::NSMenu> const& menu,
    std::shared_ptr<platform::NSMenuItem> const& item, platform::Point location)
{
    m_ledger.note("menu shown at " + ledgerText(platform::Size { location.x, location.y })
        + (item ? " with " + item->title() : ""));
    m_openMenu = menu;
    // An item tells of itself whether or not the menu is open then.
    menu->setItemObserver(
        [&ledger = m_ledger](auto const& changed) { ledger.note("menu item title: " + changed.title()); });
}

std::vector<MemoryStatusBarButton::MenuLine> MemoryStatusBarButton::menuLines() const
{
    std::vector<MenuLine> lines;
    if (!m_openMenu)
        return lines;
    for (auto const& item : m_openMenu->itemArray())
        lines.push_back({ item->title(), item->keyEquivalent(), item->isEnabled(), item->isSeparatorItem() });
    return lines;
}

bool MemoryStatusBarButton::choose(std::size_t line)
{
    if (!m_openMenu || line >= m_openMenu->itemArray().size())
        return false;
    auto const item = m_openMenu->itemArray()[line];
    if (item->isSeparatorItem() || !item->isEnabled())
        return false;
    auto const self = shared_from_this();
    closeMenu();
    item->reportChosen();
    return true;
}

} // namespace backends
