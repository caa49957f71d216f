#include "iOS/NSWindow+Paneweld.h"

#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWindow.h"
#include "platform/runtime/AssociatedObjects.h"

namespace paneweld {

using platform::AssociationKey;
using platform::AssociationPolicy;
using platform::NSWindow;
using platform::Value;

namespace {

AssociationKey const identifierKey;
AssociationKey const pinKey;

// Absent is not the same as false, though both mean "not pinned".
std::optional<bool> pinState(NSWindow const& window) { return associatedObject(window, pinKey).asBool(); }

bool hasType(NSWindow const& window, bool (WindowIdentifier::*isKind)() const)
{
    auto const identifier = windowIdentifier(window);
    return identifier && (*identifier.*isKind)();
}

} // namespace

std::shared_ptr<WindowIdentifier> windowIdentifier(NSWindow const& window)
{
    return std::dynamic_pointer_cast<WindowIdentifier>(associatedObject(window, identifierKey).asObject());
}

std::optional<std::string> uniqueIdentifier(NSWindow const& window)
{
    auto const identifier = windowIdentifier(window);
    return identifier ? std::optional(identifier->id()) : std::nullopt;
}

std::optional<std::string> windowType(NSWindow const& window)
{
    auto const identifier = windowIdentifier(window);
    return identifier ? std::optional(identifier->type()) : std::nullopt;
}

bool isBrainstorm(NSWindow const& window) { return hasType(window, &WindowIdentifier::isBrainstorm); }
bool isIOSApp(NSWindow const& window) { return hasType(window, &WindowIdentifier::isIOSApp); }
bool isOnboarding(NSWindow const& window) { return hasType(window, &WindowIdentifier::isOnboarding); }
bool isSettings(NSWindow const& window) { return hasType(window, &WindowIdentifier::isSettings); }

bool isBrainstormPinned(NSWindow const& window) { return pinState(window).value_or(false); }

void setBrainstormPinned(NSWindow& window, bool isPinned)
{
    setAssociatedObject(window, pinKey, isPinned, AssociationPolicy::Copy);
}

void updateWindowLevel(NSWindow& window)
{
    if (pinState(window) == true && window.level() != platform::windowLevelFloating) {
        window.setLevel(platform::windowLevelFloating);
        window.orderFrontRegardless();
        return;
    }
    // A pinned window that floats already comes here too and sinks: a second call takes the first one back. It is
    // meant; callers call once for each change.
    if (window.level() != platform::windowLevelNormal)
        window.setLevel(platform::windowLevelNormal);
}

void loadWindowIdentifierFromTitle(NSWindow& window)
{
    // The title was read before and holds the human title now, or whatever the host has put there since.
    if (windowIdentifier(window))
        return;
    auto const identifier = WindowIdentifier::from(window.title());
    if (!identifier)
        return;
    setAssociatedObject(
        window, identifierKey, std::shared_ptr<platform::NSObject>(identifier), AssociationPolicy::Copy);
    window.setTitle(identifier->localizedTitle());
    platform::NotificationCenter::defaultCenter().post(
        { NotificationName::windowIdentifierDidLoad(), window.shared_from_this(),
            WindowIdentifierDidLoad { identifier->id(), identifier->localizedTitle() }.userInfo() });
}

std::shared_ptr<NSWindow> firstWindow(
    platform::NSApplication const& application, std::function<bool(NSWindow const&)> const& isWanted)
{
    for (auto& window : application.windows()) {
        if (isWanted(*window))
            return window;
    }
    return nullptr;
}

std::shared_ptr<NSWindow> firstWindow(platform::NSApplication const& application, std::string const& id)
{
    return firstWindow(application, [&](NSWindow const& window) { return uniqueIdentifier(window) == id; });
}

} // namespace paneweld
