#pragma once

#include "backends/memory/Ledger.h"
#include "backends/shared/Animator.h"
#include "platform/appkit/NSWindow.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace backends {

// A window of the memory world. Commands are written to the ledger; what a person or a window manager does to it has
// a function here too, and reports the way a real window does.
class MemoryWindow : public platform::NSWindow, public AnimatedWindow {
public:
    MemoryWindow(platform::NSApplication& application, Animator& animator, Ledger& ledger, std::string name,
        std::string title, platform::Rect const& frame);
    ~MemoryWindow() override;

    // What a person, the host's toolkit or a window manager does.
    void show();
    void becomeKey();
    void resignKey();
    void hostSetTitle(std::string title) { m_title = std::move(title); }
    void startLiveResize() { reportWillStartLiveResize(); }
    void endLiveResize(platform::Rect const& frame);
    // Sees to it that close() is refused, as a host may.
    void setRefusesClose(bool refuses) { m_refusesClose = refuses; }
    // As a window that takes no input.
    void setCanBecomeKey(bool canBecomeKey) { m_canBecomeKey = canBecomeKey; }
    void setContentView(std::shared_ptr<platform::NSView> view) { m_contentView = std::move(view); }
    void removeStandardButtons() { m_buttons.clear(); }

    // What a test may look at beside the platform's questions.
    std::string const& name() const { return m_name; }
    bool isListed() const override { return !m_isWithdrawn; }

    std::string title() const override { return m_title; }
    std::string className() const override { return m_className; }
    platform::Rect frame() const override { return m_frame; }
    double alphaValue() const override { return m_alpha; }
    platform::WindowLevel level() const override { return m_level; }
    platform::WindowStyleMask styleMask() const override { return m_styleMask; }
    platform::Size contentMinSize() const override { return m_contentMinSize; }
    platform::Size contentMaxSize() const override { return m_contentMaxSize; }
    bool isVisible() const override { return m_isVisible; }
    bool canBecomeKeyWindow() const override { return m_canBecomeKey && !m_isWithdrawn; }
    std::shared_ptr<platform::NSView> contentView() const override { return m_contentView; }
    platform::NSButton* standardWindowButton(platform::WindowButton button) override;

    void setTitle(std::string const& title) override;
    void setFrame(platform::Rect const& frame, platform::Display display) override;
    void setAlphaValue(double alpha) override;
    void setLevel(platform::WindowLevel level) override;
    void setStyleMask(platform::WindowStyleMask mask) override;
    void setTitlebarAppearsTransparent(bool isTransparent) override;
    void setTitleVisibility(platform::TitleVisibility visibility) override;
    void setBackgroundColor(platform::NSColor const& color) override;
    void setMovableByWindowBackground(bool isMovable) override;
    void setReleasedWhenClosed(bool isReleased) override;
    void setOpaque(bool isOpaque) override;
    void setHasShadow(bool hasShadow) override;
    void setCollectionBehavior(platform::WindowCollectionBehavior behavior) override;
    void setContentMinSize(platform::Size const& size) override;
    void setContentMaxSize(platform::Size const& size) override;
    void orderFrontRegardless() override;
    void makeKeyAndOrderFront() override;
    void close() override;
    platform::NSWindowAnimator& animator() override;

    platform::Rect animatedFrame() const override { return m_frame; }
    double animatedAlpha() const override { return m_alpha; }
    void applyAnimatedFrame(platform::Rect const& frame) override;
    void applyAnimatedAlpha(double alpha) override;

private:
    class RecordingAnimator;

    void note(std::string const& text) { m_ledger.note(m_name + " " + text); }

    Animator& m_animator;
    Ledger& m_ledger;
    std::string m_name;
    std::string m_title;
    std::string m_className = "NSWindow";
    platform::Rect m_frame;
    double m_alpha = 1;
    platform::WindowLevel m_level = platform::windowLevelNormal;
    platform::WindowStyleMask m_styleMask = platform::styleMaskTitled | platform::styleMaskClosable
        | platform::styleMaskMiniaturizable | platform::styleMaskResizable;
    platform::Size m_contentMinSize {};
    platform::Size m_contentMaxSize { 10000, 10000 };
    bool m_isVisible = false;
    bool m_isWithdrawn = true;
    bool m_refusesClose = false;
    bool m_canBecomeKey = true;
    std::shared_ptr<platform::NSView> m_contentView = std::make_shared<platform::NSView>();
    std::map<platform::WindowButton, platform::NSButton> m_buttons;
    std::unique_ptr<RecordingAnimator> m_windowAnimator;
    std::optional<platform::Rect> m_animationTarget {};
};

} // namespace backends
