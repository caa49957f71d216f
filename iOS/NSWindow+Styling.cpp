#include "iOS/NSWindow+Paneweld.h"

#include "platform/Platform.h"
#include "platform/appkit/NSScreen.h"
#include "platform/appkit/NSVisualEffectView.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/MainThread.h"
#include "platform/runtime/AssociatedObjects.h"

#include <algorithm>

namespace paneweld {

using platform::AssociationKey;
using platform::AssociationPolicy;
using platform::Display;
using platform::NSView;
using platform::NSWindow;
using platform::WindowButton;

namespace {

AssociationKey const brainstormMarker;
AssociationKey const iOSAppMarker;
AssociationKey const onboardingMarker;
AssociationKey const settingsMarker;

// How far above the usable screen's bottom a brainstorm window opens.
constexpr double bottomDistance = 84.0;
constexpr platform::Size iOSAppFirstSize { 900, 700 };

// Anything but a number under the key reads as unmarked.
bool isMarked(NSWindow const& window, AssociationKey const& marker)
{
    return associatedObject(window, marker).asDouble().value_or(0) != 0;
}

void mark(NSWindow& window, AssociationKey const& marker)
{
    setAssociatedObject(window, marker, true, AssociationPolicy::Copy);
}

void hideButton(NSWindow& window, WindowButton which)
{
    if (auto* const button = window.standardWindowButton(which))
        button->setHidden(true);
}

void addEffectView(NSView& contentView)
{
    auto const effect = std::make_shared<platform::NSVisualEffectView>();
    effect->setTranslatesAutoresizingMaskIntoConstraints(false);
    effect->setMaterial(platform::VisualEffectMaterial::UnderWindowBackground);
    effect->setState(platform::VisualEffectState::Active);
    effect->setWantsLayer(true);
    contentView.addSubview(effect, platform::ViewPosition::Below, nullptr);
    platform::NSLayoutConstraint::activateConstraints({
        constraintEqualToAnchor(effect->leadingAnchor(), contentView.leadingAnchor()),
        constraintEqualToAnchor(effect->trailingAnchor(), contentView.trailingAnchor()),
        constraintEqualToAnchor(effect->topAnchor(), contentView.topAnchor()),
        constraintEqualToAnchor(effect->bottomAnchor(), contentView.bottomAnchor()),
    });
}

} // namespace

bool styleBrainstorm(NSWindow& window, platform::Platform& platform)
{
    platform::assertMainThread("iOS/NSWindow+Paneweld, styleBrainstorm");
    // True, not false: this kind is logged at every show and focus, the others once. Keep the difference.
    if (isMarked(window, brainstormMarker))
        return true;
    // Unseen until the fade-in, so that nobody sees it jump to its first frame.
    window.setAlphaValue(0.0);
    window.setTitlebarAppearsTransparent(true);
    window.setTitleVisibility(platform::TitleVisibility::Hidden);
    window.setStyleMask(window.styleMask() | platform::styleMaskTitled | platform::styleMaskFullSizeContentView);
    window.setBackgroundColor(platform::NSColor::clearColor());
    window.setMovableByWindowBackground(true);
    window.setReleasedWhenClosed(false);
    window.setOpaque(false);
    window.setCollectionBehavior(
        platform::collectionBehaviorCanJoinAllSpaces | platform::collectionBehaviorFullScreenAuxiliary);
    window.setHasShadow(true);
    // One that is pinned already floats from the start.
    updateWindowLevel(window);
    hideButton(window, WindowButton::Miniaturize);
    hideButton(window, WindowButton::Zoom);
    auto const contentView = window.contentView();
    if (!contentView)
        return false;
    contentView->setWantsLayer(true);
    contentView->layer()->setMasksToBounds(true);
    addEffectView(*contentView);
    auto const screen = platform.mainScreen();
    // Unmarked: the next show runs all of the above again, and adds a second effect view. It is meant to be so.
    if (!screen)
        return false;
    auto const size = Brainstorm::minimumSize;
    auto const& usable = screen->visibleFrame;
    window.setFrame(
        { usable.midX() - size.width / 2, usable.minY() + bottomDistance, size.width, size.height }, Display::No);
    mark(window, brainstormMarker);
    return true;
}

bool styleIOSApp(NSWindow& window, platform::Platform& platform)
{
    if (isMarked(window, iOSAppMarker))
        return false;
    auto const screen = platform.mainScreen();
    if (!screen)
        return false;
    auto const width = std::max(window.frame().width, iOSAppFirstSize.width);
    auto const height = std::max(window.frame().height, iOSAppFirstSize.height);
    auto const& usable = screen->visibleFrame;
    window.setFrame({ usable.midX() - width / 2, usable.midY() - height / 2, width, height }, Display::No);
    mark(window, iOSAppMarker);
    return true;
}

bool styleOnboarding(NSWindow& window)
{
    if (isMarked(window, onboardingMarker))
        return false;
    mark(window, onboardingMarker);
    return true;
}

bool styleSettings(NSWindow& window)
{
    if (isMarked(window, settingsMarker))
        return false;
    window.setTitleVisibility(platform::TitleVisibility::Visible);
    mark(window, settingsMarker);
    return true;
}

} // namespace paneweld
