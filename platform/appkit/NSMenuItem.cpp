#include "platform/appkit/NSMenuItem.h"

#include "platform/runtime/Class.h"

namespace platform {

std::shared_ptr<NSMenuItem> NSMenuItem::create(std::string title, std::string action, std::string keyEquivalent)
{
    std::shared_ptr<NSMenuItem> item(new NSMenuItem);
    item->m_title = std::move(title);
    item->m_action = std::move(action);
    item->m_keyEquivalent = std::move(keyEquivalent);
    return item;
}

std::shared_ptr<NSMenuItem> NSMenuItem::separatorItem()
{
    auto item = create({}, {}, {});
    item->m_isSeparator = true;
    return item;
}

void NSMenuItem::setTitle(std::string title)
{
    if (m_title == title)
        return;
    m_title = std::move(title);
    // A copy: who hears of it may take the item out of its menu.
    if (auto const didChange = m_didChange)
        didChange(*this);
}

bool NSMenuItem::isEnabled() const
{
    auto const target = m_target.lock();
    auto const* const description = target ? target->classDescription() : nullptr;
    return description && description->instancesRespondToSelector(m_action);
}

void NSMenuItem::reportChosen()
{
    if (auto const target = m_target.lock(); target && isEnabled())
        perform(*target, m_action);
}

} // namespace platform
