#pragma once

#include "platform/appkit/NSMenuItem.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <vector>

namespace platform {

class NSView;

// A menu: its lines in order, wherever it is shown. Main thread only.
class NSMenu : public std::enable_shared_from_this<NSMenu> {
public:
    std::vector<std::shared_ptr<NSMenuItem>> const& itemArray() const { return m_items; }
    void addItem(std::shared_ptr<NSMenuItem> item);

    // Opens it over a view, at a point of the view's own coordinates, with the item under the pointer; null for none.
    // Where views show no menus nothing happens.
    void popUpMenuPositioningItem(std::shared_ptr<NSMenuItem> const& item, Point location, NSView& view);

    // For the backend that shows it: called after an item has changed. One at a time; an empty one takes it away.
    void setItemObserver(std::function<void(NSMenuItem const&)> didChange) { m_itemDidChange = std::move(didChange); }

private:
    std::vector<std::shared_ptr<NSMenuItem>> m_items;
    std::function<void(NSMenuItem const&)> m_itemDidChange;
};

} // namespace platform
