#include "platform/appkit/NSApplication.h"

#include "platform/appkit/NSWindow.h"

#include <algorithm>

namespace platform {

NSApplication::NSApplication() = default;
NSApplication::~NSApplication() = default;

std::vector<std::shared_ptr<NSWindow>> NSApplication::windows() const
{
    std::vector<std::shared_ptr<NSWindow>> listed;
    for (auto const& window : m_windows) {
        if (window->isListed())
            listed.push_back(window);
    }
    return listed;
}

void NSApplication::insertWindow(std::shared_ptr<NSWindow> window) { m_windows.push_back(std::move(window)); }

void NSApplication::removeWindow(NSWindow const& window)
{
    if (m_keyWindow.get() == &window)
        m_keyWindow = nullptr;
    std::erase_if(m_windows, [&](auto const& known) { return known.get() == &window; });
}

} // namespace platform
