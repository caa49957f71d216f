#pragma once

#include "backends/linux/x11/LiveResize.h"
#include "backends/linux/x11/WindowAlpha.h"
#include "backends/linux/x11/WindowDecorations.h"
#include "backends/linux/x11/WindowFrame.h"
#include "backends/linux/x11/WindowLife.h"
#include "backends/linux/x11/WindowLimits.h"
#include "backends/linux/x11/WindowProperties.h"
#include "backends/linux/x11/WindowStates.h"
#include "backends/linux/x11/X11Context.h"
#include "backends/shared/Animator.h"
#include "platform/appkit/NSWindow.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <xcb/xcb.h>

namespace backends {

// A top-level window of this process on an X server, made by the host's toolkit over a connection of its own. It is
// held unseen until it was reported and has its place. Main thread only.
class X11Window final : public platform::NSWindow, public AnimatedWindow {
public:
    // What the world around the windows is told.
    struct Observer {
        // It was reported and may have the keyboard from now on.
        std::function<void(X11Window&)> didShow;
        // It may have become, or ceased to be, a window that can have the keyboard or be dragged.
        std::function<void(X11Window&)> didChange;
        // It came forward, or asked to.
        std::function<void(X11Window&)> didRaise;
        // It was gone before it could be listened to, so that no event will tell.
        std::function<void(X11Window&)> hadGone;
    };

    enum class Found {
        New, // it was made just now, so nobody can have seen it
        Existing, // it was there before us
        Asserted, // somebody says that it is ours; nothing is written on it before announce
    };

    static std::shared_ptr<X11Window> create(
        X11Context const& context, xcb_window_t window, Found found, Observer observer);
    X11Window(X11Context const& context, xcb_window_t window, Observer observer);
    ~X11Window() override;

    xcb_window_t xid() const { return m_window; }
    PixelRect visiblePixels() const { return m_frame.visiblePixels(); }
    // On the screen, and its coming was reported.
    bool isShown() const;
    // The keyboard is reported after the report that the window is there, whatever is done to it from inside that one.
    bool mayBecomeKey() const { return isShown() && !m_isBeingReported; }
    bool isMovableByBackground() const { return m_isMovableByBackground; }
    // On the screen with a size or a look that was set here, so that a drag of its edge matters.
    bool wantsLiveResize() const { return isShown() && m_isStyled; }

    // Reports the window now instead of when it is mapped. Everything about it has been read. Nothing for a window
    // that is on the screen already.
    void announce();
    // It turned out to be somebody else's.
    void forget();
    void readAll(std::function<void()> done);
    // Asks whether it is on the screen, where nobody may have heard of that.
    enum class Unmapped { IsLeft, IsHeld };
    void readPresence(Unmapped unmapped);

    // News of the wire.
    void handleConfigure(xcb_configure_notify_event_t const& event, bool isButtonDown);
    void handleParentConfigure(xcb_configure_notify_event_t const& event) { m_frame.handleParentConfigure(event); }
    void handleProperty(xcb_atom_t property) { m_properties.handleChange(property); }
    void handleMap() { m_life.handleMap(); }
    void handleUnmap();
    void handleWithdrawMessage() { m_life.handleWithdrawMessage(); }
    void handleReparent(xcb_window_t parent);
    void handleDestroy();
    LiveResize& liveResize() { return m_liveResize; }

    // News of the world around it.
    void windowManagerDidChange();
    void compositorDidChange() { m_alpha.compositorDidChange(); }
    void shapeWasTakenOff() { m_alpha.shapeWasTakenOff(); }
    void scaleDidChange(PixelScale const& before);

    // NSWindow.
    std::string title() const override { return m_properties.title(); }
    std::string className() const override { return m_properties.className(); }
    platform::Rect frame() const override { return m_frame.frame(); }
    double alphaValue() const override { return m_alpha.value(); }
    platform::WindowLevel level() const override { return m_states.level(); }
    platform::WindowStyleMask styleMask() const override { return m_decorations.styleMask(); }
    platform::Size contentMinSize() const override { return m_limits.minimum(); }
    platform::Size contentMaxSize() const override { return m_limits.maximum(); }
    bool isVisible() const override;
    bool canBecomeKeyWindow() const override;
    bool isListed() const override;
    std::shared_ptr<platform::NSView> contentView() const override { return m_contentView; }
    platform::NSButton* standardWindowButton(platform::WindowButton button) override;

    void setTitle(std::string const& title) override { m_properties.setTitle(title); }
    void setFrame(platform::Rect const& frame, platform::Display display) override;
    void setAlphaValue(double alpha) override { m_alpha.setValue(alpha); }
    void setLevel(platform::WindowLevel level) override { m_states.setLevel(level); }
    void setStepsAside(bool stepsAside) { m_states.setStepsAside(stepsAside); }
    void setStyleMask(platform::WindowStyleMask mask) override;
    void setTitlebarAppearsTransparent(bool isTransparent) override;
    void setTitleVisibility(platform::TitleVisibility visibility) override;
    // The content is the host's drawing, so its ground is too.
    void setBackgroundColor(platform::NSColor const&) override { }
    void setMovableByWindowBackground(bool isMovable) override { m_isMovableByBackground = isMovable; }
    // Windows are the host's to make and to destroy.
    void setReleasedWhenClosed(bool) override { }
    // Given by the visual with which the host made the window.
    void setOpaque(bool) override { }
    // Shadows are the compositor's, which gives every window one.
    void setHasShadow(bool) override { }
    void setCollectionBehavior(platform::WindowCollectionBehavior behavior) override;
    void setContentMinSize(platform::Size const& size) override;
    void setContentMaxSize(platform::Size const& size) override;
    void orderFrontRegardless() override;
    void makeKeyAndOrderFront() override;
    void close() override;
    platform::NSWindowAnimator& animator() override;

    // AnimatedWindow.
    platform::Rect animatedFrame() const override { return m_frame.frame(); }
    double animatedAlpha() const override { return m_alpha.value(); }
    void applyAnimatedFrame(platform::Rect const& frame) override;
    void applyAnimatedAlpha(double alpha) override { m_alpha.setValue(alpha); }

private:
    WindowProperties::Observer observeProperties();
    WindowLife::Observer observeLife();
    void readStart(Found found);
    void presenceWasRead(bool isMapped, Unmapped unmapped);
    void wasMapped(WindowLife::Presence before);
    void finishShowing();
    void endHoldWhenPlaced();
    void endHoldWhenQuiet();
    void endHoldWhenBare();
    void managedStateWasRead(std::optional<std::uint32_t> state);
    void cameBack();
    void report();
    void wasWithdrawn();
    void markStyled();
    void contentDidChange();
    std::shared_ptr<X11Window> self() { return std::static_pointer_cast<X11Window>(shared_from_this()); }

    X11Context const& m_context;
    xcb_window_t m_window;
    Observer m_observer;
    WindowAlpha m_alpha;
    WindowLimits m_limits;
    WindowFrame m_frame;
    WindowDecorations m_decorations;
    WindowStates m_states;
    WindowProperties m_properties;
    WindowLife m_life;
    LiveResize m_liveResize;
    std::shared_ptr<platform::NSView> m_contentView;
    std::unique_ptr<platform::NSWindowAnimator> m_animator;
    bool m_isReported = false;
    bool m_isBeingReported = false;
    bool m_isAnnounced = false;
    bool m_isMovableByBackground = false;
    bool m_isStyled = false;
    // How often a frame that did not arrive may still be asked for before the window is shown as it is.
    int m_placingsLeft = 0;
    // How often it is looked whether the window manager has taken its decorations away.
    int m_looksAtFrameLeft = 0;
    LoopSource m_quietTimer;
    // Counts mappings, so that the answers of an earlier one are told from the latest.
    unsigned m_mappings = 0;
};

} // namespace backends
