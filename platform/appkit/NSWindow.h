#pragma once

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSColor.h"
#include "platform/appkit/NSView.h"
#include "platform/foundation/Geometry.h"
#include "platform/foundation/Notification.h"
#include "platform/runtime/NSObject.h"

#include <cstdint>
#include <memory>
#include <string>

namespace platform {

class NSApplication;

enum class Display { No, Yes };
enum class TitleVisibility { Visible = 0, Hidden = 1 };

// Heights at which windows are stacked.
using WindowLevel = std::int64_t;
constexpr WindowLevel windowLevelNormal = 0;
constexpr WindowLevel windowLevelFloating = 3;

// Bits of the style mask.
using WindowStyleMask = std::uint64_t;
constexpr WindowStyleMask styleMaskTitled = 1;
constexpr WindowStyleMask styleMaskClosable = 2;
constexpr WindowStyleMask styleMaskMiniaturizable = 4;
constexpr WindowStyleMask styleMaskResizable = 8;
constexpr WindowStyleMask styleMaskFullSizeContentView = 0x8000;

// Bits of the collection behaviour.
using WindowCollectionBehavior = std::uint64_t;
constexpr WindowCollectionBehavior collectionBehaviorCanJoinAllSpaces = 1;
constexpr WindowCollectionBehavior collectionBehaviorFullScreenAuxiliary = 0x100;

// What changes to a window inside an animation group go through.
class NSWindowAnimator {
public:
    virtual ~NSWindowAnimator() = default;
    virtual void setFrame(Rect const& frame, Display display) = 0;
    virtual void setAlphaValue(double alpha) = 0;
};

// One top-level window of this process, made by the host's own toolkit and reached from outside it. Calls out are
// virtual and carry the platform's own words; news in are the report functions, which alone post the platform's
// notifications and keep their order. Main thread only. Lengths are points, y grows upward.
class NSWindow : public NSObject {
public:
    explicit NSWindow(NSApplication& application)
        : m_application(application)
    {
    }

    // What one may ask.
    virtual std::string title() const = 0;
    virtual std::string className() const = 0;
    // The target of the last setFrame until the window system's answer supersedes it.
    virtual Rect frame() const = 0;
    virtual double alphaValue() const = 0;
    virtual WindowLevel level() const = 0;
    virtual WindowStyleMask styleMask() const = 0;
    virtual Size contentMinSize() const = 0;
    virtual Size contentMaxSize() const = 0;
    virtual bool isVisible() const = 0;
    virtual bool canBecomeKeyWindow() const = 0;
    // Whether NSApp's list of windows holds it.
    virtual bool isListed() const { return true; }
    // Null when the window has none.
    virtual std::shared_ptr<NSView> contentView() const = 0;
    // Null when the window has no such button.
    virtual NSButton* standardWindowButton(WindowButton button) = 0;
    bool isKeyWindow() const;

    // What one may command.
    virtual void setTitle(std::string const& title) = 0;
    virtual void setFrame(Rect const& frame, Display display) = 0;
    virtual void setAlphaValue(double alpha) = 0;
    virtual void setLevel(WindowLevel level) = 0;
    virtual void setStyleMask(WindowStyleMask mask) = 0;
    virtual void setTitlebarAppearsTransparent(bool isTransparent) = 0;
    virtual void setTitleVisibility(TitleVisibility visibility) = 0;
    virtual void setBackgroundColor(NSColor const& color) = 0;
    virtual void setMovableByWindowBackground(bool isMovable) = 0;
    virtual void setReleasedWhenClosed(bool isReleased) = 0;
    virtual void setOpaque(bool isOpaque) = 0;
    virtual void setHasShadow(bool hasShadow) = 0;
    virtual void setCollectionBehavior(WindowCollectionBehavior behavior) = 0;
    virtual void setContentMinSize(Size const& size) = 0;
    virtual void setContentMaxSize(Size const& size) = 0;
    virtual void orderFrontRegardless() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    // Asks the window to close. Whether and when it goes is the owner's business; reportWillClose tells.
    virtual void close() = 0;
    virtual NSWindowAnimator& animator() = 0;

    // News from the window system, called by the backend alone.
    void reportWillBecomeVisible();
    // The window that was key resigns first. Nothing happens when it is key already.
    void reportDidBecomeKey();
    // Nothing happens when it is not key.
    void reportDidResignKey();
    // A key window resigns first.
    void reportWillClose();
    void reportWillStartLiveResize();
    void reportDidEndLiveResize();

private:
    void post(NotificationName const& name);

    NSApplication& m_application;
};

// The names under which the reports are posted, each with the window as its object.
NotificationName const& windowWillBecomeVisibleNotification(); // "_NSWindowWillBecomeVisible"
NotificationName const& windowDidBecomeKeyNotification();
NotificationName const& windowDidResignKeyNotification();
NotificationName const& windowWillCloseNotification();
NotificationName const& windowWillStartLiveResizeNotification();
NotificationName const& windowDidEndLiveResizeNotification();

} // namespace platform
