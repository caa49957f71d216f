#include "platform/appkit/NSWindow.h"

#include "platform/appkit/NSApplication.h"
#include "platform/foundation/NotificationCenter.h"

namespace platform {

namespace {

template<typename Tag>
NotificationName const& nameOf(Tag, char const* text)
{
    static NotificationName const name { text };
    return name;
}

} // namespace

NotificationName const& windowWillBecomeVisibleNotification()
{
    return nameOf([] {}, "_NSWindowWillBecomeVisible");
}

NotificationName const& windowDidBecomeKeyNotification()
{
    return nameOf([] {}, "NSWindowDidBecomeKeyNotification");
}

NotificationName const& windowDidResignKeyNotification()
{
    return nameOf([] {}, "NSWindowDidResignKeyNotification");
}

NotificationName const& windowWillCloseNotification()
{
    return nameOf([] {}, "NSWindowWillCloseNotification");
}

NotificationName const& windowWillStartLiveResizeNotification()
{
    return nameOf([] {}, "NSWindowWillStartLiveResizeNotification");
}

NotificationName const& windowDidEndLiveResizeNotification()
{
    return nameOf([] {}, "NSWindowDidEndLiveResizeNotification");
}

bool NSWindow::isKeyWindow() const { return m_application.keyWindow().get() == this; }

void NSWindow::reportWillBecomeVisible() { post(windowWillBecomeVisibleNotification()); }

void NSWindow::reportDidBecomeKey()
{
    auto const self = std::static_pointer_cast<NSWindow>(shared_from_this());
    auto const previous = m_application.keyWindow();
    if (previous == self)
        return;
    if (previous)
        previous->reportDidResignKey();
    // An observer of the resignation may have made another window key; the last word holds.
    if (m_application.keyWindow())
        return;
    m_application.setKeyWindow(self);
    post(windowDidBecomeKeyNotification());
}

void NSWindow::reportDidResignKey()
{
    if (!isKeyWindow())
        return;
    m_application.setKeyWindow(nullptr);
    post(windowDidResignKeyNotification());
}

void NSWindow::reportWillClose()
{
    auto const self = shared_from_this();
    reportDidResignKey();
    post(windowWillCloseNotification());
}

void NSWindow::reportWillStartLiveResize() { post(windowWillStartLiveResizeNotification()); }

void NSWindow::reportDidEndLiveResize() { post(windowDidEndLiveResizeNotification()); }

void NSWindow::post(NotificationName const& name)
{
    NotificationCenter::defaultCenter().post({ name, shared_from_this(), {} });
}

} // namespace platform
