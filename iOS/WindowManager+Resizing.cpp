#include "iOS/WindowManager.h"

#include "iOS/NSWindow+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "platform/Platform.h"
#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/MainThread.h"

// The road of a height: from the host's request through its window's pipeline to the frame, and the reports back.

namespace paneweld {

using platform::Display;
using platform::Notification;
using platform::NSWindow;

namespace {

constexpr platform::Seconds fadeInDuration { 0.06 };

} // namespace

void WindowManager::brainstormWindowPreferredHeightDidChange(Notification const& notification)
{
    platform::assertMainThread("iOS/WindowManager+Resizing, brainstormWindowPreferredHeightDidChange");
    auto const payload = BrainstormWindowPreferredHeightDidChange::from(notification);
    if (!payload)
        return;
    ResizeBrainstormWindow request { payload->windowID, payload->minHeight, payload->maxHeight, payload->preferredWidth,
        payload->preferredHeight, {}, payload->animate };
    if (request.preferredWidth || request.preferredHeight)
        request.preferredSizeID = platform::UUID::random();
    m_resizeBrainstormSubject.send(request);
}

void WindowManager::sendIsAnimating(std::string const& id, bool isAnimating)
{
    m_isWindowAnimatingSubject.send({ id, isAnimating });
}

void WindowManager::observeResizing()
{
    auto const pipelines = std::make_shared<ResizePipelines>([weak = weakSelf()](auto const& latest) {
        if (auto const self = weak.lock())
            self->receive(latest);
    });
    m_resizePipelines = pipelines;
    m_resizeSubscriptions.push_back(m_resizeBrainstormSubject.publisher().sink(
        [pipelines](auto const& request) { pipelines->receiveRequest(request); }));
    m_resizeSubscriptions.push_back(
        m_isWindowAnimatingSubject.publisher().sink([pipelines](auto const& flag) { pipelines->receiveFlag(flag); }));
}

void WindowManager::rebuildResizePipelines(WindowAction const& change)
{
    m_resizePipelines->rebuild(change, m_resizeBrainstormSubject.value());
}

void WindowManager::receive(ResizeBrainstormWindow const& latest)
{
    auto request = latest;
    // Limits apply each time, also when a rebuild replays the request; a preferred size applies once.
    if (!m_state->with([&](State& locked) { return locked.takePreferredSize(latest); })) {
        request.preferredWidth = std::nullopt;
        request.preferredHeight = std::nullopt;
    }
    apply(request);
}

void WindowManager::apply(ResizeBrainstormWindow const& request)
{
    auto const& id = request.windowIdentifier;
    auto const window = firstWindow(m_platform.application(), id);
    if (!window)
        return;
    auto const frame = window->frame();
    auto const geometry = ResizeGeometry::resolve(request, frame);
    window->setContentMinSize(geometry.minSize);
    window->setContentMaxSize(geometry.maxSize);
    // The height reported is the target, also where the frame is not allowed to be as low.
    auto const report
        = BrainstormWindowResize { geometry.target.height, geometry.minSize.height, geometry.maxSize.height, id }
              .userInfo();
    if (geometry.isReached(frame)) {
        postToHost(NotificationName::brainstormWindowWillResize(), report);
        postToHost(NotificationName::brainstormWindowDidResize(), report);
        return;
    }
    auto const targetFrame = geometry.targetFrame(frame);
    // Shuts this window's pipeline until the resize ends.
    sendIsAnimating(id, true);
    postToHost(NotificationName::brainstormWindowWillResize(), report);
    // Whatever was asked for meanwhile is applied when the flag falls, and so before this did-resize.
    auto const finish = [self = std::static_pointer_cast<WindowManager>(shared_from_this()), id, report] {
        self->sendIsAnimating(id, false);
        self->postToHost(NotificationName::brainstormWindowDidResize(), report);
    };
    if (!request.isAnimated) {
        window->setFrame(targetFrame, Display::Yes);
        finish();
        return;
    }
    m_platform.animationContext().runAnimationGroup(
        [&](auto&) { window->animator().setFrame(targetFrame, Display::Yes); }, finish);
}

void WindowManager::fadeIn(std::shared_ptr<NSWindow> const& window)
{
    auto const id = uniqueIdentifier(*window);
    if (id)
        sendIsAnimating(*id, true);
    if (!window->isVisible()) {
        window->setAlphaValue(1.0);
        if (id)
            sendIsAnimating(*id, false);
        return;
    }
    m_platform.animationContext().runAnimationGroup(
        [&](auto& group) {
            group.setDuration(fadeInDuration);
            window->animator().setAlphaValue(1.0);
        },
        [weak = weakSelf(), id] {
            if (auto const self = weak.lock(); self && id)
                self->sendIsAnimating(*id, false);
        });
}

void WindowManager::windowWillStartLiveResize(Notification const& notification)
{
    auto const window = windowOf(notification);
    // The host's requests wait until the user's hand is off the window.
    if (window && isBrainstorm(*window))
        sendIsAnimating(uniqueIdentifier(*window).value_or(""), true);
}

void WindowManager::windowDidEndLiveResize(Notification const& notification)
{
    auto const window = windowOf(notification);
    if (!window || !isBrainstorm(*window))
        return;
    auto const id = uniqueIdentifier(*window).value_or("");
    sendIsAnimating(id, false);
    // Read after the flag fell: a request that waited has moved the frame by now.
    auto const frame = window->frame();
    postToHost(NotificationName::brainstormWindowDidEndLiveResize(),
        BrainstormWindowDidEndLiveResize { id, frame.width, frame.height }.userInfo());
}

} // namespace paneweld
