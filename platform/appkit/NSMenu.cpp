#include "platform/appkit/NSMenu.h"

#include "platform/appkit/NSView.h"

namespace platform {

void NSMenu::addItem(std::shared_ptr<NSMenuItem> item)
{
    item->m_didChange = [weak = weak_from_this()](NSMenuItem const& changed) {
        auto const menu = weak.lock();
        // A copy: the observer may set another one.
        auto const didChange = menu ? menu->m_itemDidChange : nullptr;
        if (didChange)
            didChange(changed);
    };
    m_items.push_back(std::move(item));
}

void NSMenu::popUpMenuPositioningItem(std::shared_ptr<NSMenuItem> const& item, Point location, NSView& view)
{
    view.showMenu(shared_from_this(), item, location);
}

} // namespace platform
