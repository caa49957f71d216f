#include "backends/linux/x11/X11Window.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/EarlyHold.h"
#include "backends/linux/x11/PropertyValues.h"
#include "backends/linux/x11/X11Desktop.h"
#include "platform/appkit/NSVisualEffectView.h"

#include <algorithm>
#include <utility>

namespace backends {

using platform::Display;
using platform::NSButton;
using platform::Rect;
using platform::Size;

namespace {

constexpr std::uint32_t fromPager = 2;
// A window manager that answers with another place gets two more requests, one that is silent some more time.
constexpr int placingsBeforeShowing = 6;
constexpr int placingsForAnAnswer = 2;
// A window manager that leaves something around a window for ever delays it by so many frames.
constexpr int looksAtFrame = 30;
// One frame of a usual display.
constexpr platform::Seconds quietTimeBeforeShowing { 1.0 / 60 };

} // namespace

std::shared_ptr<X11Window> X11Window::create(
    X11Context const& context, xcb_window_t window, Found found, Observer observer)
{
    auto created = std::make_shared<X11Window>(context, window, std::move(observer));
    created->m_alpha.setOwner(created);
    created->m_frame.setOwner(created);
    created->m_properties.setOwner(created);
    created->readStart(found);
    return created;
}

X11Window::X11Window(X11Context const& context, xcb_window_t window, Observer observer)
    : NSWindow(context.application)
    , m_context(context)
    , m_window(window)
    , m_observer(std::move(observer))
    , m_alpha(context, window)
    , m_limits(context, window)
    , m_frame(context, window, m_limits)
    , m_decorations(context, window)
    , m_states(context, window)
    , m_properties(context, window, observeProperties())
    , m_life(context, observeLife())
    , m_liveResize(
          context.loop, [this] { reportWillStartLiveResize(); },
          [this] {
              auto const keepAlive = self();
              reportDidEndLiveResize();
          })
    , m_contentView(std::make_shared<platform::NSView>())
{
    m_contentView->setHierarchyObserver([this] { contentDidChange(); });
    m_limits.setWriteHandler([this] { m_properties.noteOwnWriting(XCB_ATOM_WM_NORMAL_HINTS); });
    m_decorations.setWriteHandler(
        [this] { m_properties.noteOwnWriting(m_context.connection.atom(AtomName::MOTIF_WM_HINTS)); });
    m_alpha.setWriteHandler(
        [this] { m_properties.noteOwnWriting(m_context.connection.atom(AtomName::NET_WM_WINDOW_OPACITY)); });
    m_frame.setSettledHandler([this] { endHoldWhenPlaced(); });
}

X11Window::~X11Window() { m_contentView->setHierarchyObserver({}); }

WindowProperties::Observer X11Window::observeProperties()
{
    return {
        .sizeHintsWereRead = [this](auto const& hints) { m_limits.handleRead(hints); },
        .decorationsWereRead = [this](auto words) { m_decorations.handleRead(std::move(words)); },
        .statesWereRead =
            [this](auto words) {
                auto const hidden = m_context.connection.atom(AtomName::NET_WM_STATE_HIDDEN);
                m_life.handleHidden(std::find(words.begin(), words.end(), hidden) != words.end());
                m_states.handleRead(std::move(words));
                m_observer.didChange(*this);
            },
        .insetsWereRead = [this](auto const& insets) { m_frame.setInsets(insets); },
        .opacityWasRead = [this](auto opacity) { m_alpha.handleRead(opacity.value_or(opaque)); },
        .managedStateWasRead = [this](auto state) { managedStateWasRead(state); },
    };
}

WindowLife::Observer X11Window::observeLife()
{
    return {
        .wasMapped = [this](auto before) { wasMapped(before); },
        .cameBack = [this] { cameBack(); },
        .wasWithdrawn = [this] { wasWithdrawn(); },
        .askManagedState = [this] { m_properties.handleChange(m_context.connection.atom(AtomName::WM_STATE)); },
    };
}

void X11Window::readStart(Found found)
{
    auto& connection = m_context.connection;
    std::uint32_t const mask
        = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(connection.wire(), m_window, XCB_CW_EVENT_MASK, &mask);
    m_alpha.begin(found == Found::New ? WindowAlpha::Beginning::Held : WindowAlpha::Beginning::AsItIs);
    readAll({});
    // What happened before the events were asked for.
    readPresence(found == Found::Asserted ? Unmapped::IsLeft : Unmapped::IsHeld);
}

void X11Window::readPresence(Unmapped unmapped)
{
    auto& connection = m_context.connection;
    auto const cookie = xcb_get_window_attributes(connection.wire(), m_window);
    connection.ask<xcb_get_window_attributes_reply_t>(
        cookie.sequence, [weak = std::weak_ptr(self()), unmapped](auto const* reply) {
            auto const window = weak.lock();
            if (!window)
                return;
            if (reply)
                window->presenceWasRead(reply->map_state != XCB_MAP_STATE_UNMAPPED, unmapped);
            else
                window->m_observer.hadGone(*window);
        });
}

void X11Window::presenceWasRead(bool isMapped, Unmapped unmapped)
{
    if (isMapped) {
        if (m_life.isWithdrawn())
            handleMap();
    } else if (!m_life.isWithdrawn()) {
        handleUnmap();
    } else if (unmapped == Unmapped::IsHeld) {
        m_alpha.hold();
    }
}

void X11Window::readAll(std::function<void()> done)
{
    m_frame.read();
    m_properties.readAll(std::move(done));
}

bool X11Window::isShown() const { return m_isReported && m_life.presence() == WindowLife::Presence::Shown; }

bool X11Window::isVisible() const { return m_isAnnounced || isShown(); }

bool X11Window::isListed() const { return m_isAnnounced || !m_life.isWithdrawn(); }

bool X11Window::canBecomeKeyWindow() const { return isListed() && m_properties.takesInput(); }

void X11Window::announce()
{
    if (m_isAnnounced || !m_life.isWithdrawn())
        return;
    m_alpha.hold();
    m_isAnnounced = true;
    m_isReported = true;
    reportWillBecomeVisible();
}

void X11Window::forget()
{
    std::uint32_t const mask = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_context.connection.wire(), m_window, XCB_CW_EVENT_MASK, &mask);
    // Nobody else would take off again what was taken over.
    m_alpha.release();
    m_context.earlyHold.forget(m_window);
}

void X11Window::wasMapped(WindowLife::Presence before)
{
    m_frame.setMapping(WindowFrame::Mapping::Mapped);
    m_states.setManaged(m_context.desktop.hasWindowManager());
    if (before == WindowLife::Presence::Shown)
        return;
    // It comes back from an icon, which is reported apart.
    if (m_isReported && !m_isAnnounced) {
        m_states.tellAgain();
        return;
    }
    // What the window says of itself by now is what its report is about, so it is read to the end first. Until then
    // nobody sees it.
    readAll([weak = std::weak_ptr(self()), mapping = ++m_mappings] {
        auto const window = weak.lock();
        if (window && window->m_mappings == mapping && !window->m_life.isWithdrawn())
            window->finishShowing();
    });
}

void X11Window::managedStateWasRead(std::optional<std::uint32_t> state)
{
    m_life.handleManagedState(state);
    if (!state || !m_isAnnounced || !m_life.isWithdrawn())
        return;
    // A window manager looks after it and has not mapped it: the toolkit has written over half of what the window says
    // about its desktop, and so it was put on another one (xfwm4, Qt).
    m_states.setManaged(m_context.desktop.hasWindowManager());
    m_states.tellAgain();
}

void X11Window::cameBack()
{
    auto const keepAlive = self();
    // Its first report is still to come.
    if (!m_isReported || m_isAnnounced)
        return;
    report();
    m_observer.didChange(*this);
    // It may have gone to its icon while it was being shown for the first time, and then nobody has seen it yet.
    endHoldWhenPlaced();
}

void X11Window::report()
{
    m_isBeingReported = true;
    reportWillBecomeVisible();
    m_isBeingReported = false;
}

void X11Window::finishShowing()
{
    m_isReported = true;
    bool const wasAnnounced = std::exchange(m_isAnnounced, false);
    if (!wasAnnounced)
        report();
    // An observer may have closed the window.
    if (m_life.isWithdrawn())
        return;
    m_states.tellAgain();
    m_placingsLeft = placingsBeforeShowing;
    m_looksAtFrameLeft = looksAtFrame;
    m_frame.sendAgain();
    endHoldWhenPlaced();
    m_observer.didShow(*this);
}

void X11Window::endHoldWhenPlaced()
{
    if (!m_alpha.isHeld() || !isShown() || !m_frame.isSettled())
        return;
    if (!m_frame.isAtTarget() && m_placingsLeft > 0) {
        m_placingsLeft -= m_frame.wasAnswered() ? placingsForAnAnswer : 1;
        m_frame.sendAgain();
        return;
    }
    if (!m_frame.hasTarget()) {
        m_alpha.release();
        return;
    }
    // Right after mapping a window manager may still be putting its frame in order around the window.
    if (!m_quietTimer)
        m_quietTimer = m_context.loop.after(quietTimeBeforeShowing, [this] { endHoldWhenQuiet(); });
}

void X11Window::endHoldWhenQuiet()
{
    m_quietTimer.end();
    bool const hasMovedAgain = !m_frame.isSettled() || (!m_frame.isAtTarget() && m_placingsLeft > 0);
    if (hasMovedAgain || !isShown())
        endHoldWhenPlaced();
    else if (m_decorations.isBorderless() && m_looksAtFrameLeft-- > 0)
        endHoldWhenBare();
    else
        m_alpha.release();
}

void X11Window::endHoldWhenBare()
{
    // What was taken off after mapping goes when the window manager comes to it, which it tells nobody.
    m_frame.askWhetherFramed([this](bool isFramed) {
        if (!m_alpha.isHeld() || m_quietTimer)
            return;
        if (isFramed)
            m_quietTimer = m_context.loop.after(quietTimeBeforeShowing, [this] { endHoldWhenQuiet(); });
        else
            m_alpha.release();
    });
}

void X11Window::wasWithdrawn()
{
    auto const keepAlive = self();
    m_isAnnounced = false;
    if (m_isReported) {
        m_context.animator.endAnimations(*this);
        m_liveResize.end();
        reportWillClose();
    }
    m_isReported = false;
    m_frame.setMapping(WindowFrame::Mapping::Unmapped);
    m_states.setManaged(false);
    // For the next time.
    m_alpha.hold();
    m_observer.didChange(*this);
}

void X11Window::handleConfigure(xcb_configure_notify_event_t const& event, bool isButtonDown)
{
    if (!m_frame.handleConfigure(event) || !isShown())
        return;
    if (isButtonDown)
        m_frame.keepUsersSize();
    m_liveResize.sizeDidChange(isButtonDown);
}

void X11Window::handleUnmap()
{
    // Where its user has put it is where it comes back. What fills the screen has no place of its own.
    if (isShown() && !m_alpha.isHeld()) {
        if (m_states.fillsScreen())
            m_frame.keepPixels();
        else
            m_frame.keepOthersPlace();
    }
    m_life.handleUnmap();
}

void X11Window::handleDestroy()
{
    m_life.handleDestroy();
    // Announced and never mapped: its coming was reported, and so is its end.
    if (m_isAnnounced)
        wasWithdrawn();
}

void X11Window::handleReparent(xcb_window_t parent)
{
    m_life.handleReparent();
    m_frame.handleParent(parent);
}

void X11Window::windowManagerDidChange()
{
    if (m_life.isWithdrawn())
        return;
    m_states.setManaged(m_context.desktop.hasWindowManager());
    m_states.tellAgain();
}

void X11Window::scaleDidChange(PixelScale const& before)
{
    m_frame.renewLimits();
    // The size of a window with a frame is its toolkit's and its user's.
    if (!m_decorations.isBorderless()) {
        m_frame.keepPixels();
        return;
    }
    auto const end = m_context.animator.targetFrame(*this);
    m_context.animator.endFrameAnimations(*this);
    m_frame.keepPoints(before, end);
}

NSButton* X11Window::standardWindowButton(platform::WindowButton button) { return m_decorations.button(button); }

void X11Window::setFrame(Rect const& frame, Display)
{
    m_context.animator.endFrameAnimations(*this);
    m_frame.setFrame(frame);
}

void X11Window::applyAnimatedFrame(Rect const& frame)
{
    m_frame.setFrame(frame, m_context.animator.targetFrame(*this));
}

void X11Window::markStyled()
{
    m_isStyled = true;
    m_observer.didChange(*this);
}

void X11Window::setStyleMask(platform::WindowStyleMask mask)
{
    m_decorations.setStyleMask(mask);
    markStyled();
}

void X11Window::setTitlebarAppearsTransparent(bool isTransparent)
{
    m_decorations.setTitlebarAppearsTransparent(isTransparent);
}

void X11Window::setTitleVisibility(platform::TitleVisibility visibility)
{
    m_decorations.setTitleVisibility(visibility);
}

void X11Window::setCollectionBehavior(platform::WindowCollectionBehavior behavior)
{
    m_states.setCollectionBehavior(behavior);
}

void X11Window::setContentMinSize(Size const& size)
{
    m_limits.include(m_frame.pixels(), m_frame.pixels());
    m_limits.setMinimum(size);
    markStyled();
}

void X11Window::setContentMaxSize(Size const& size)
{
    m_limits.include(m_frame.pixels(), m_frame.pixels());
    m_limits.setMaximum(size);
    markStyled();
}

void X11Window::orderFrontRegardless()
{
    if (m_life.isWithdrawn())
        return;
    // Both forms, because no window manager minds the second and some do not listen to the first.
    std::uint32_t const above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_context.connection.wire(), m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    if (m_context.desktop.supports(AtomName::NET_RESTACK_WINDOW))
        m_context.desktop.tellManager(m_window, AtomName::NET_RESTACK_WINDOW, { fromPager, XCB_WINDOW_NONE, above });
}

void X11Window::makeKeyAndOrderFront()
{
    if (m_life.isWithdrawn())
        return;
    m_observer.didRaise(*this);
    auto& connection = m_context.connection;
    auto const time = connection.latestUserTime();
    if (m_context.desktop.supports(AtomName::NET_ACTIVE_WINDOW)) {
        m_context.desktop.tellManager(m_window, AtomName::NET_ACTIVE_WINDOW, { fromPager, time, XCB_WINDOW_NONE });
        return;
    }
    orderFrontRegardless();
    if (m_properties.takesInput())
        xcb_set_input_focus(connection.wire(), XCB_INPUT_FOCUS_PARENT, m_window, time);
}

void X11Window::close()
{
    if (!isListed())
        return;
    auto& connection = m_context.connection;
    if (!m_properties.canBeAskedToClose()) {
        connection.log().error("window cannot be asked to close: id=%llu", { std::uint64_t { m_window } });
        return;
    }
    connection.send(m_window,
        { m_window, AtomName::WM_PROTOCOLS,
            { connection.atom(AtomName::WM_DELETE_WINDOW), connection.latestUserTime() } });
}

platform::NSWindowAnimator& X11Window::animator()
{
    if (!m_animator)
        m_animator = m_context.animator.makeWindowAnimator(std::weak_ptr<AnimatedWindow>(self()));
    return *m_animator;
}

void X11Window::contentDidChange()
{
    auto const& views = m_contentView->subviews();
    m_decorations.setBlursBehind(std::any_of(views.begin(), views.end(),
        [](auto const& view) { return std::dynamic_pointer_cast<platform::NSVisualEffectView>(view) != nullptr; }));
}

} // namespace backends
