#include "iOS/WindowManager.h"

#include "iOS/NSWindow+Paneweld.h"
#include "iOS/UIScheduler.h"
#include "platform/Platform.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/appkit/NSWindow.h"
#include "platform/combine/Filter.h"
#include "platform/combine/ReceiveOn.h"
#include "platform/combine/RemoveDuplicates.h"

#include <utility>

// Which windows are shown, and the Escape key of brainstorm windows.

namespace paneweld {

using platform::Notification;
using platform::NSEvent;
using platform::NSWindow;

void WindowManager::observeWindowActions()
{
    observeResizing();
    // A repeated show of one window, as every focus reports it, ends at the first step; an action that changes
    // nothing ends at the second, unless it is the very first. What goes on is the change and not the set: it is as
    // good as a copy of the set to whoever hears all changes in order, and costs the same however many are shown.
    m_windowActionSubscription
        = m_windowActionSubject.publisher()
              .then(platform::removeDuplicates<WindowAction>())
              .then(platform::filter<WindowAction>(
                  [state = m_state, isFirst = std::make_shared<bool>(true)](WindowAction const& action) {
                      bool const isChange = state->with([&](State& locked) { return locked.apply(action); });
                      return std::exchange(*isFirst, false) || isChange;
                  }))
              .then(platform::receiveOn<WindowAction>(UIScheduler::shared(m_platform.mainQueue())))
              .sink([weak = weakSelf()](WindowAction const& change) {
                  if (auto const self = weak.lock())
                      self->rebuildResizePipelines(change);
              });
}

void WindowManager::windowWillClose(Notification const& notification)
{
    auto const window = windowOf(notification);
    if (!window)
        return;
    // The Escape monitor is not touched here: a key window resigns before it closes.
    if (auto const id = uniqueIdentifier(*window))
        m_windowActionSubject.send(WindowAction::willClose(*id));
}

void WindowManager::windowDidResignKey(Notification const& notification)
{
    if (auto const window = windowOf(notification))
        removeEscapeMonitor(*window);
}

void WindowManager::installEscapeMonitor(std::shared_ptr<NSWindow> const& window)
{
    removeEscapeMonitor(*window);
    if (!isBrainstorm(*window))
        return;
    // The handler does not ask which window the event is for: while the brainstorm window is key, Escape anywhere in
    // the application closes it. The hold on the window is strong and ends with the monitor.
    m_keyDownMonitors[window.get()] = m_platform.eventMonitors().addLocalMonitorForEventsMatchingMask(
        platform::EventMask::KeyDown, { platform::keyCodeEscape },
        [window](NSEvent const& event) -> std::optional<NSEvent> {
            if (event.keyCode != platform::keyCodeEscape)
                return event;
            window->close();
            return std::nullopt;
        },
        platform::NSEventMonitors::Consumption::Always);
}

void WindowManager::removeEscapeMonitor(NSWindow const& window)
{
    auto const entry = m_keyDownMonitors.extract(&window);
    // A platform that gave no token leaves an empty entry behind.
    if (!entry.empty() && entry.mapped())
        m_platform.eventMonitors().removeMonitor(entry.mapped());
}

} // namespace paneweld
