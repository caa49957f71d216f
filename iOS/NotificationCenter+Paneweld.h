#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/NotificationCenter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paneweld {

// The names under which host and plug-in talk. Each is made once and is the same object for the life of the process.
struct NotificationName {
    using Name = platform::NotificationName;

    // Host to plug-in.
    static Name const& requestFileAccess();
    static Name const& executeMailScript();
    static Name const& updateGlobalNewBrainstormShortcut();
    static Name const& brainstormWindowPinStateDidChange();
    static Name const& updateMenuItemTitle();
    static Name const& brainstormWindowPreferredHeightDidChange();
    static Name const& openFileURL();

    // Plug-in to host.
    static Name const& globalNewBrainstormShortcutTriggered();
    static Name const& openSettingsOrOnboarding();
    static Name const& importDroppedURLs();
    static Name const& openNewWindow();
    static Name const& forceOpenNewBrainstormWindow();
    static Name const& windowIdentifierDidLoad();
    static Name const& brainstormWindowWillResize();
    static Name const& brainstormWindowDidResize();
    static Name const& brainstormWindowDidEndLiveResize();
    static Name const& checkForUpdates();

    // Reserved for the host's own use: the plug-in neither posts nor observes them.
    static Name const& quitApp();
    static Name const& brainstormWindowDidReceiveDrop();
};

// The payloads, one struct each. `from` reads a notification and gives nothing when it is not as agreed; `userInfo`
// writes the dictionary. Lengths are points.

// Signature: the chosen folders, or nothing. Called once. Any thread.
struct RequestFileAccess {
    using Completion = std::function<void(std::optional<std::vector<platform::URL>> const&)>;
    static constexpr char const* completionSignature = "completion(urls?)";

    Completion completion;

    static std::optional<RequestFileAccess> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

// Signature: the script's text or nothing, and an error or nothing. Called once, from any thread.
struct ExecuteMailScript {
    using Completion = std::function<void(std::optional<std::string> const&, std::optional<platform::NSError> const&)>;
    static constexpr char const* completionSignature = "completion(text?, error?)";

    std::string handler;
    platform::List params;
    Completion completion;

    static std::optional<ExecuteMailScript> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct UpdateGlobalNewBrainstormShortcut {
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    bool isEnabled = false;

    static std::optional<UpdateGlobalNewBrainstormShortcut> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct ImportDroppedURLs {
    std::vector<platform::URL> urls;

    static std::optional<ImportDroppedURLs> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct BrainstormWindowPinStateDidChange {
    std::string windowID;
    bool isPinned = false;

    static std::optional<BrainstormWindowPinStateDidChange> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct UpdateMenuItemTitle {
    bool hasUser = false;

    static std::optional<UpdateMenuItemTitle> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct WindowIdentifierDidLoad {
    std::string windowID;
    std::string localizedTitle;

    static std::optional<WindowIdentifierDidLoad> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct BrainstormWindowPreferredHeightDidChange {
    std::string windowID;
    bool animate = true;
    std::optional<double> minHeight {};
    std::optional<double> maxHeight {};
    std::optional<double> preferredWidth {};
    std::optional<double> preferredHeight {};

    static std::optional<BrainstormWindowPreferredHeightDidChange> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

// Both of will-resize and did-resize.
struct BrainstormWindowResize {
    double height = 0;
    double minHeight = 0;
    double maxHeight = 0;
    std::string windowID;

    static std::optional<BrainstormWindowResize> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct BrainstormWindowDidEndLiveResize {
    std::string windowID;
    double width = 0;
    double height = 0;

    static std::optional<BrainstormWindowDidEndLiveResize> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

struct OpenFileURL {
    struct BookmarkEntry {
        platform::URL url;
        platform::Data data;
    };

    platform::URL url;
    // Entries with a missing key or a wrong type are skipped.
    std::vector<BookmarkEntry> bookmarks;

    static std::optional<OpenFileURL> from(platform::Notification const& notification);
    platform::Dictionary userInfo() const;
};

// Observes with a closure, always on the main queue and, but for a filter by sender, every post of the name. Being
// delivered elsewhere is a fatal error.
[[nodiscard]] std::shared_ptr<platform::ObservationToken> addObserver(platform::NotificationCenter& center,
    platform::NotificationName const& name, std::shared_ptr<platform::NSObject> object,
    platform::NotificationCenter::Handler handler);

} // namespace paneweld
