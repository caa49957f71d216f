#pragma once

#include "iOS/IsWindowAnimating.h"
#include "iOS/Locked.h"
#include "iOS/ResizeBrainstormWindow.h"
#include "iOS/ResizePipelines.h"
#include "iOS/WindowAction.h"
#include "iOS/WindowState.h"
#include "platform/appkit/Forward.h"
#include "platform/combine/Cancellable.h"
#include "platform/combine/CurrentValueSubject.h"
#include "platform/combine/PassthroughSubject.h"
#include "platform/foundation/Notification.h"
#include "platform/runtime/Class.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace platform {
class NSEventMonitor;
class Platform;
}

namespace paneweld {

// Watches the host's windows: recognises and styles them, keeps track of which are shown, closes a brainstorm window
// on Escape, and brings its height to what the host wants. It makes no window and owns none. Main thread only.
class WindowManager : public platform::NSObject {
public:
    static std::shared_ptr<WindowManager> create(platform::Platform& platform);
    ~WindowManager() override;

    // Registers the nine observations, in their order. Call once.
    void observeNotifications();

    void windowWillBecomeVisible(platform::Notification const& notification);
    void windowDidBecomeKey(platform::Notification const& notification);
    void windowDidResignKey(platform::Notification const& notification);
    void windowWillClose(platform::Notification const& notification);
    void windowWillStartLiveResize(platform::Notification const& notification);
    void windowDidEndLiveResize(platform::Notification const& notification);
    void brainstormWindowPreferredHeightDidChange(platform::Notification const& notification);
    void brainstormWindowPinStateDidChange(platform::Notification const& notification);
    void openFileURL(platform::Notification const& notification);

    // "PaneweldWindowManager" with its selectors; the maker is added where it is exported.
    static platform::Class const& runtimeClass();
    platform::Class const* classDescription() const override { return &runtimeClass(); }

protected:
    explicit WindowManager(platform::Platform& platform);

    // The end of construction: what needs a weak hold on this object.
    void observeWindowActions();

    // The set of shown windows has changed: ends every resize pipeline and builds one for each that is shown now, none
    // of which has seen a flag.
    virtual void rebuildResizePipelines(WindowAction const& change);

    // What comes out of a window's pipeline.
    void receive(ResizeBrainstormWindow const& latest);

    platform::CurrentValueSubject<ResizeBrainstormWindow> m_resizeBrainstormSubject;
    // One stream for all windows: a pipeline sees only the latest flag, whichever window it is about.
    platform::PassthroughSubject<IsWindowAnimating> m_isWindowAnimatingSubject;

private:
    std::weak_ptr<WindowManager> weakSelf();
    void observeResizing();
    void postToHost(platform::NotificationName const& name, platform::Dictionary userInfo);

    void style(std::shared_ptr<platform::NSWindow> const& window);
    void reportShown(platform::NSWindow const& window);
    void fadeIn(std::shared_ptr<platform::NSWindow> const& window);

    void installEscapeMonitor(std::shared_ptr<platform::NSWindow> const& window);
    void removeEscapeMonitor(platform::NSWindow const& window);

    void apply(ResizeBrainstormWindow const& request);
    void sendIsAnimating(std::string const& id, bool isAnimating);

    platform::Platform& m_platform;
    std::shared_ptr<Locked<State>> m_state;

    // Each brainstorm window that is key has a local key-down monitor. Their tokens are let go with this object, the
    // monitors themselves are not taken away then.
    std::map<platform::NSWindow const*, std::shared_ptr<platform::NSEventMonitor>> m_keyDownMonitors;
    platform::PassthroughSubject<WindowAction> m_windowActionSubject;
    // Nobody sends into it and nobody listens. It is kept as an inert signal on purpose.
    platform::PassthroughSubject<std::monostate> m_forceUpdateHeightSubject;
    std::optional<platform::Cancellable> m_windowActionSubscription;
    std::shared_ptr<ResizePipelines> m_resizePipelines;
    // One for each stream, of all pipelines together.
    std::vector<platform::Cancellable> m_resizeSubscriptions;
};

// The window that a notification is about; null when its object is none.
std::shared_ptr<platform::NSWindow> windowOf(platform::Notification const& notification);

} // namespace paneweld
