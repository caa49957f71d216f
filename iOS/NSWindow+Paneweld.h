#pragma once

#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class NSApplication;
class NSWindow;
class Platform;
} // namespace platform

namespace paneweld {

class WindowIdentifier;

// The sizes of each kind, in points. They may be changed before windows are shown; nothing here does.
struct Brainstorm {
    static inline platform::Size minimumSize { 640, 91 };
    static inline platform::Size maximumSize { 1280, 1440 };
    // The smallest height at which the window counts as expanded.
    static inline double expandedMinimumHeight = 360;
};

struct iOSApp {
    static inline platform::Size minimumSize { 400, 700 };
};

struct Onboarding {
    static inline platform::Size minimumSize { 320, 700 };
    static inline platform::Size maximumSize { 430, 960 };
};

struct Settings {
    static inline platform::Size minimumSize { 320, 640 };
    static inline platform::Size maximumSize { 430, 960 };
};

// What a tag makes of a window. Main thread only.

// Null, absent and false while the window carries no identifier.
std::shared_ptr<WindowIdentifier> windowIdentifier(platform::NSWindow const& window);
std::optional<std::string> uniqueIdentifier(platform::NSWindow const& window);
std::optional<std::string> windowType(platform::NSWindow const& window);
bool isBrainstorm(platform::NSWindow const& window);
bool isIOSApp(platform::NSWindow const& window);
bool isOnboarding(platform::NSWindow const& window);
bool isSettings(platform::NSWindow const& window);

// False until first set. Setting changes nothing else: call updateWindowLevel() once afterwards.
bool isBrainstormPinned(platform::NSWindow const& window);
void setBrainstormPinned(platform::NSWindow& window, bool isPinned);

// Floating and in front when pinned, normal otherwise. Called on a pinned window that floats already it puts the
// window back to normal: callers call it once for each change of the pin state.
void updateWindowLevel(platform::NSWindow& window);

// Takes the identifier out of the title, once in a window's life, puts the human title there and tells the host with
// "Paneweld.WindowIdentifierDidLoad". A title that is no identifier is left alone.
void loadWindowIdentifierFromTitle(platform::NSWindow& window);

// The first of the application's windows, in its order, that is what is asked for; null when none is.
std::shared_ptr<platform::NSWindow> firstWindow(
    platform::NSApplication const& application, std::function<bool(platform::NSWindow const&)> const& isWanted);
// The one that is tagged with the id.
std::shared_ptr<platform::NSWindow> firstWindow(platform::NSApplication const& application, std::string const& id);

// The looks. Each gives a window its look and first frame and marks it, once; true means that the kind's line is to
// be logged.

// True again for a window that is styled: this kind is logged at every show and focus, the others once. Keep the
// difference. False when there is no content view or no main screen: the next show tries again, from the start.
bool styleBrainstorm(platform::NSWindow& window, platform::Platform& platform);
bool styleIOSApp(platform::NSWindow& window, platform::Platform& platform);
// The host's own look is kept on purpose.
bool styleOnboarding(platform::NSWindow& window);
bool styleSettings(platform::NSWindow& window);

} // namespace paneweld
