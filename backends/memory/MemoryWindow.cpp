#include "backends/memory/MemoryWindow.h"

namespace backends {

using platform::Display;
using platform::Rect;
using platform::WindowButton;

namespace {

std::string yesNo(bool answer) { return answer ? "yes" : "no"; }

char const* nameOf(WindowButton button)
{
    constexpr char const* names[] = { "close", "miniaturize", "zoom" };
    return names[static_cast<int>(button)];
}

} // namespace

// Writes down where an animation is to go before the animator takes it on.
class MemoryWindow::RecordingAnimator : public platform::NSWindowAnimator {
public:
    explicit RecordingAnimator(MemoryWindow& window)
        : m_window(window)
        , m_steps(
              window.m_animator.makeWindowAnimator(std::static_pointer_cast<MemoryWindow>(window.shared_from_this())))
    {
    }

    void setFrame(Rect const& frame, Display display) override
    {
        m_window.note("animate " + ledgerText(frame));
        m_window.m_animationTarget = frame;
        m_steps->setFrame(frame, display);
    }

    void setAlphaValue(double alpha) override
    {
        m_window.note("animate alpha " + ledgerText(alpha));
        m_steps->setAlphaValue(alpha);
    }

private:
    MemoryWindow& m_window;
    std::unique_ptr<platform::NSWindowAnimator> m_steps;
};

MemoryWindow::MemoryWindow(platform::NSApplication& application, Animator& animator, Ledger& ledger, std::string name,
    std::string title, Rect const& frame)
    : NSWindow(application)
    , m_animator(animator)
    , m_ledger(ledger)
    , m_name(std::move(name))
    , m_title(std::move(title))
    , m_frame(frame)
{
    for (auto const button : { WindowButton::Close, WindowButton::Miniaturize, WindowButton::Zoom }) {
        m_buttons.emplace(button, platform::NSButton([this, button] {
            note(std::string(nameOf(button)) + " button hidden=" + yesNo(m_buttons.at(button).isHidden()));
        }));
    }
    m_contentView->setHierarchyObserver(
        [this] { note("contentView subviews=" + std::to_string(m_contentView->subviews().size())); });
}

MemoryWindow::~MemoryWindow()
{
    if (m_contentView)
        m_contentView->setHierarchyObserver({});
}

void MemoryWindow::show()
{
    m_isWithdrawn = false;
    // Visible from the report on, so that a fade-in that the report starts has something to fade.
    m_isVisible = true;
    reportWillBecomeVisible();
}

void MemoryWindow::becomeKey() { reportDidBecomeKey(); }

void MemoryWindow::resignKey() { reportDidResignKey(); }

void MemoryWindow::endLiveResize(Rect const& frame)
{
    m_frame = frame;
    reportDidEndLiveResize();
}

platform::NSButton* MemoryWindow::standardWindowButton(WindowButton button)
{
    auto const found = m_buttons.find(button);
    return found == m_buttons.end() ? nullptr : &found->second;
}

void MemoryWindow::setTitle(std::string const& title)
{
    m_title = title;
    note("setTitle: " + title);
}

void MemoryWindow::setFrame(Rect const& frame, Display display)
{
    m_animator.endFrameAnimations(*this);
    m_frame = frame;
    note("setFrame: " + ledgerText(frame) + " display: " + yesNo(display == Display::Yes));
}

void MemoryWindow::setAlphaValue(double alpha)
{
    m_alpha = alpha;
    note("setAlphaValue: " + ledgerText(alpha));
}

void MemoryWindow::setLevel(platform::WindowLevel level)
{
    m_level = level;
    note("setLevel: " + std::to_string(level));
}

void MemoryWindow::setStyleMask(platform::WindowStyleMask mask)
{
    m_styleMask = mask;
    note("setStyleMask: " + std::to_string(mask));
}

void MemoryWindow::setTitlebarAppearsTransparent(bool isTransparent)
{
    note("setTitlebarAppearsTransparent: " + yesNo(isTransparent));
}

void MemoryWindow::setTitleVisibility(platform::TitleVisibility visibility)
{
    note("setTitleVisibility: " + std::to_string(static_cast<int>(visibility)));
}

void MemoryWindow::setBackgroundColor(platform::NSColor const& color)
{
    note(std::string("setBackgroundColor: ") + (color == platform::NSColor::clearColor() ? "clear" : "solid"));
}

void MemoryWindow::setMovableByWindowBackground(bool isMovable)
{
    note("setMovableByWindowBackground: " + yesNo(isMovable));
}

void MemoryWindow::setReleasedWhenClosed(bool isReleased) { note("setReleasedWhenClosed: " + yesNo(isReleased)); }

void MemoryWindow::setOpaque(bool isOpaque) { note("setOpaque: " + yesNo(isOpaque)); }

void MemoryWindow::setHasShadow(bool hasShadow) { note("setHasShadow: " + yesNo(hasShadow)); }

void MemoryWindow::setCollectionBehavior(platform::WindowCollectionBehavior behavior)
{
    note("setCollectionBehavior: " + std::to_string(behavior));
}

void MemoryWindow::setContentMinSize(platform::Size const& size)
{
    m_contentMinSize = size;
    note("setContentMinSize: " + ledgerText(size));
}

void MemoryWindow::setContentMaxSize(platform::Size const& size)
{
    m_contentMaxSize = size;
    note("setContentMaxSize: " + ledgerText(size));
}

void MemoryWindow::orderFrontRegardless() { note("orderFrontRegardless"); }

void MemoryWindow::makeKeyAndOrderFront()
{
    note("makeKeyAndOrderFront");
    if (!m_isWithdrawn)
        reportDidBecomeKey();
}

void MemoryWindow::close()
{
    note("close");
    if (m_refusesClose || m_isWithdrawn)
        return;
    reportWillClose();
    m_isVisible = false;
    m_isWithdrawn = true;
    m_animator.endAnimations(*this);
}

platform::NSWindowAnimator& MemoryWindow::animator()
{
    if (!m_windowAnimator)
        m_windowAnimator = std::make_unique<RecordingAnimator>(*this);
    return *m_windowAnimator;
}

void MemoryWindow::applyAnimatedFrame(Rect const& frame)
{
    m_frame = frame;
    if (m_animationTarget != frame)
        return;
    m_animationTarget = std::nullopt;
    note("frame " + ledgerText(frame));
}

void MemoryWindow::applyAnimatedAlpha(double alpha)
{
    auto const hasArrived = alpha >= 1 && m_alpha < 1;
    m_alpha = alpha;
    if (hasArrived)
        note("alpha " + ledgerText(alpha));
}

} // namespace backends
