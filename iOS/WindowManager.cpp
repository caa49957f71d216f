#include "iOS/WindowManager.h"

#include "iOS/NSWindow+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "platform/Platform.h"
#include "platform/appkit/NSWindow.h"
#include "platform/dispatch/Queue.h"
#include "platform/runtime/NSNotification.h"

namespace paneweld {

using platform::Notification;
using platform::NotificationCenter;
using platform::NSWindow;

namespace {

platform::Class makeRuntimeClass()
{
    platform::Class description { "PaneweldWindowManager" };
    description.methods = {
        { "observeNotifications",
            [](platform::NSObject& object, platform::List const&) {
                static_cast<WindowManager&>(object).observeNotifications();
                return platform::Value();
            } },
        { "windowWillBecomeVisible:", platform::notificationMethod(&WindowManager::windowWillBecomeVisible) },
        { "windowDidBecomeKey:", platform::notificationMethod(&WindowManager::windowDidBecomeKey) },
        { "windowDidResignKey:", platform::notificationMethod(&WindowManager::windowDidResignKey) },
        { "windowWillClose:", platform::notificationMethod(&WindowManager::windowWillClose) },
        { "windowWillStartLiveResize:", platform::notificationMethod(&WindowManager::windowWillStartLiveResize) },
        { "windowDidEndLiveResize:", platform::notificationMethod(&WindowManager::windowDidEndLiveResize) },
        { "brainstormWindowPreferredHeightDidChange:",
            platform::notificationMethod(&WindowManager::brainstormWindowPreferredHeightDidChange) },
        { "brainstormWindowPinStateDidChange:",
            platform::notificationMethod(&WindowManager::brainstormWindowPinStateDidChange) },
        { "openFileURL:", platform::notificationMethod(&WindowManager::openFileURL) },
    };
    return description;
}

} // namespace

std::shared_ptr<NSWindow> windowOf(Notification const& notification)
{
    return std::dynamic_pointer_cast<NSWindow>(notification.object);
}

std::shared_ptr<WindowManager> WindowManager::create(platform::Platform& platform)
{
    std::shared_ptr<WindowManager> manager(new WindowManager(platform));
    manager->observeWindowActions();
    return manager;
}

WindowManager::WindowManager(platform::Platform& platform)
    : m_resizeBrainstormSubject(ResizeBrainstormWindow {})
    , m_platform(platform)
    , m_state(std::make_shared<Locked<State>>())
{
}

WindowManager::~WindowManager() = default;

platform::Class const& WindowManager::runtimeClass()
{
    static platform::Class const description = makeRuntimeClass();
    return description;
}

std::weak_ptr<WindowManager> WindowManager::weakSelf()
{
    return std::static_pointer_cast<WindowManager>(shared_from_this());
}

void WindowManager::postToHost(platform::NotificationName const& name, platform::Dictionary userInfo)
{
    NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
}

void WindowManager::observeNotifications()
{
    auto const observe = [&](platform::NotificationName const& name, char const* selector) {
        addObserver(NotificationCenter::defaultCenter(), shared_from_this(), selector,
            { name, nullptr, std::string("not on the main thread: PaneweldWindowManager ") + selector });
    };
    observe(platform::windowWillBecomeVisibleNotification(), "windowWillBecomeVisible:");
    observe(platform::windowDidBecomeKeyNotification(), "windowDidBecomeKey:");
    observe(platform::windowDidResignKeyNotification(), "windowDidResignKey:");
    observe(platform::windowWillCloseNotification(), "windowWillClose:");
    observe(platform::windowWillStartLiveResizeNotification(), "windowWillStartLiveResize:");
    observe(platform::windowDidEndLiveResizeNotification(), "windowDidEndLiveResize:");
    observe(NotificationName::brainstormWindowPreferredHeightDidChange(), "brainstormWindowPreferredHeightDidChange:");
    observe(NotificationName::brainstormWindowPinStateDidChange(), "brainstormWindowPinStateDidChange:");
    observe(NotificationName::openFileURL(), "openFileURL:");
}

void WindowManager::windowWillBecomeVisible(Notification const& notification)
{
    auto const window = windowOf(notification);
    if (!window)
        return;
    style(window);
    reportShown(*window);
}

void WindowManager::windowDidBecomeKey(Notification const& notification)
{
    auto const window = windowOf(notification);
    if (!window)
        return;
    style(window);
    installEscapeMonitor(window);
    reportShown(*window);
}

void WindowManager::reportShown(NSWindow const& window)
{
    auto const id = uniqueIdentifier(window);
    if (!id)
        return;
    m_windowActionSubject.send(WindowAction::willShow(*id));
    // Read again: who heard of the show may have done anything to the window.
    if (auto const stillTagged = uniqueIdentifier(window))
        sendIsAnimating(*stillTagged, false);
}

void WindowManager::style(std::shared_ptr<NSWindow> const& window)
{
    loadWindowIdentifierFromTitle(*window);
    auto const& log = OSLog::paneweld(m_platform);
    auto const id = uniqueIdentifier(*window).value_or("");
    if (isBrainstorm(*window)) {
        if (!styleBrainstorm(*window, m_platform))
            return;
        log.debug("styled brainstorm window: id=%{public}s", { id });
        m_platform.mainQueue().async([weak = weakSelf(), window] {
            if (auto const self = weak.lock())
                self->fadeIn(window);
        });
        return;
    }
    if (isIOSApp(*window)) {
        if (styleIOSApp(*window, m_platform))
            log.debug("styled ios app window: id=%{public}s", { id });
        return;
    }
    if (isOnboarding(*window)) {
        if (styleOnboarding(*window))
            log.debug("styled onboarding app window: id=%{public}s", { id });
        return;
    }
    if (isSettings(*window)) {
        if (styleSettings(*window))
            log.debug("styled settings app window: id=%{public}s", { id });
        return;
    }
    log.info("did not style window: id=%{public}s class=%{public}s", { id, window->className() });
}

} // namespace paneweld
