#pragma once

#include "backends/memory/Ledger.h"
#include "backends/memory/MemoryBundleFiles.h"
#include "backends/memory/MemoryHotKeys.h"
#include "backends/memory/MemoryPasteboard.h"
#include "backends/memory/MemoryScripts.h"
#include "backends/memory/MemoryStatusBar.h"
#include "backends/memory/MemorySymbolicHotKeys.h"
#include "backends/memory/MemoryTime.h"
#include "backends/memory/MemoryUpdates.h"
#include "backends/memory/MemoryWindow.h"
#include "backends/shared/Animator.h"
#include "platform/Platform.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/appkit/NSScreen.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/Bookmark.h"
#include "platform/foundation/Bundles.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/HostInfo.h"
#include "platform/log/LogSink.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace backends {

// A small world without an operating system: windows, keys, files and dialogs as plain facts, and a clock that is
// moved by hand. It stands in for a real one wherever the order and content of what happens is what counts.
class MemoryPlatform : public platform::Platform {
public:
    MemoryPlatform();
    ~MemoryPlatform() override;

    // Makes a world, installs it and gives it back. Once a process.
    static MemoryPlatform& install();

    // Moves the clock, frame by frame, with a turn of the main queue at each.
    void advance(platform::Seconds by);
    // Turns of the main queue until nothing is left to do; the clock stands still.
    void settle();

    Ledger& ledger() { return m_ledger; }
    std::vector<platform::LogRecord> const& logRecords() const { return m_log.records; }
    void showPrivateLogValues() { m_log.showsPrivate = true; }
    // Hears every line as it is written; an empty function takes it away.
    void setLogListener(std::function<void(platform::LogRecord const&)> listener)
    {
        m_log.listener = std::move(listener);
    }
    MemoryBundleFiles& files() { return m_files; }

    // What there is to see and to answer with.
    std::shared_ptr<MemoryWindow> makeWindow(
        std::string name, std::string title, platform::Rect const& frame = { 100, 84, 640, 91 });
    void setMainScreen(std::optional<platform::NSScreen> screen) { m_screen = std::move(screen); }
    void setCanWatchKeys(bool canWatch) { m_monitors.canWatch = canWatch; }
    // A key press with the keyboard on the key window. True when it reached the window.
    bool pressKey(std::uint16_t keyCode, platform::NSEventModifierFlags modifierFlags = {});

    // The hot-key service, lent or not, with its keyboard.
    MemoryHotKeys& hotKeys() { return m_hotKeys; }
    // A world without them has no shortcuts of the system either: both are lent as null.
    void setHasHotKeys(bool hasHotKeys) { m_hasHotKeys = hasHotKeys; }
    // The feed, the installed version and the user's answers.
    MemoryUpdates& updates() { return m_updates; }
    // A world without a status bar lends null.
    void setHasStatusBar(bool hasStatusBar) { m_hasStatusBar = hasStatusBar; }

    struct PanelAnswer {
        platform::ModalResponse response = platform::ModalResponse::Cancel;
        std::vector<platform::URL> urls {};
        // What happens while the dialog is open.
        std::function<void()> meanwhile {};
    };
    void answerNextPanel(PanelAnswer answer) { m_panelAnswers.push_back(std::move(answer)); }
    // Dialogs that were shown without an answer prepared; they count as cancelled.
    int unansweredPanels() const { return m_unansweredPanels; }

    struct BookmarkFacts {
        std::optional<platform::URL> resolvesTo {};
        bool grantsAccess = true;
    };
    void setBookmark(platform::Data const& data, BookmarkFacts facts)
    {
        m_bookmarks.facts[GrantedFolders::keyOf(data)] = std::move(facts);
    }
    // What was bookmarked is renamed, or removed for good.
    void renameFile(platform::URL const& from, platform::URL const& to) { m_bookmarks.move(from, to); }
    void removeFile(platform::URL const& url) { m_bookmarks.move(url, std::nullopt); }
    // Why addresses cannot be opened from now on; absent: they can.
    void setOpenError(std::optional<platform::NSError> error) { m_workspace.error = std::move(error); }
    // What the scripts of this world do.
    MemoryScripts& scripts() { return m_scripts; }
    // A world without them lends null.
    void setHasScripts(bool hasScripts) { m_hasScripts = hasScripts; }
    void setReadable(std::string path) { m_fileManager.readable.insert(std::move(path)); }
    void setLocalizedHostName(std::optional<std::string> name) { m_hostInfo.name = std::move(name); }
    void setMachineModel(std::optional<std::string> model) { m_hostInfo.model = std::move(model); }

    platform::LogSink& logSink() override { return m_log; }
    platform::Clock& clock() override { return m_clock; }
    platform::Queue& mainQueue() override { return m_mainQueue; }
    std::unique_ptr<platform::Queue> makeSerialQueue(std::string const& label) override;
    void sleepForTimeInterval(platform::Seconds interval) override;
    platform::Bundles& bundles() override { return m_bundles; }
    platform::FileManager& fileManager() override { return m_fileManager; }
    platform::HostInfo& hostInfo() override { return m_hostInfo; }
    platform::NSApplication& application() override { return m_application; }
    platform::NSEventMonitors& eventMonitors() override { return m_monitors; }
    platform::NSAnimationContext& animationContext() override { return m_animator; }
    std::optional<platform::NSScreen> mainScreen() override { return m_screen; }
    std::unique_ptr<platform::NSOpenPanel> makeOpenPanel() override;
    platform::NSWorkspace* workspace() override { return &m_workspace; }
    platform::Bookmarks* bookmarks() override { return &m_bookmarks; }
    MemoryScripts* appleScripts() override { return m_hasScripts ? &m_scripts : nullptr; }
    MemoryHotKeys* eventHotKeys() override { return m_hasHotKeys ? &m_hotKeys : nullptr; }
    MemoryStatusBar* statusBar() override { return m_hasStatusBar ? &m_statusBar : nullptr; }
    MemorySymbolicHotKeys* symbolicHotKeys() override { return m_hasHotKeys ? &m_symbolicHotKeys : nullptr; }
    std::unique_ptr<platform::SPUStandardUpdaterController> makeStandardUpdaterController(
        platform::StartingUpdater startingUpdater, std::weak_ptr<platform::SPUUpdaterDelegate> delegate) override;

private:
    struct Log : platform::LogSink {
        std::vector<platform::LogRecord> records {};
        bool showsPrivate = false;
        std::function<void(platform::LogRecord const&)> listener {};

        bool accepts(platform::LogLevel) const override { return true; }
        bool showsPrivateValues() const override { return showsPrivate; }
        void write(platform::LogRecord const& record) override
        {
            records.push_back(record);
            if (listener)
                listener(record);
        }
    };

    struct Application : platform::NSApplication {
        explicit Application(Ledger& toldLedger)
            : ledger(toldLedger)
        {
        }
        void activateIgnoringOtherApps(bool) override { ledger.note("application activate"); }
        void terminate() override { ledger.note("application terminate"); }
        Ledger& ledger;
    };

    struct Monitors : platform::NSEventMonitors {
        bool canWatch = true;

        std::shared_ptr<platform::NSEventMonitor> addLocalMonitorForEventsMatchingMask(platform::EventMask mask,
            std::set<std::uint16_t> keyCodes, Handler handler, Consumption consumption) override;
    };

    struct Files : platform::FileManager {
        std::set<std::string> readable {};

        platform::URL homeDirectoryForCurrentUser() const override;
        bool isReadableFile(std::string const& path) const override { return readable.contains(path); }
    };

    struct Machine : platform::HostInfo {
        std::optional<std::string> name = "Memory Machine";
        std::optional<std::string> model = "Memory1,1";

        std::optional<std::string> localizedName() const override { return name; }
        std::optional<std::string> machineModel() const override { return model; }
        std::string operatingSystemVersionString() const override { return "Memory 1.0"; }
    };

    struct Workspace : platform::NSWorkspace {
        Workspace(Ledger& toldLedger, platform::Queue& laterQueue)
            : ledger(toldLedger)
            , later(laterQueue)
        {
        }
        bool openURL(platform::URL const& url) override;
        Ledger& ledger;
        platform::Queue& later;
        std::optional<platform::NSError> error {};
    };

    struct GrantedFolders : platform::Bookmarks {
        explicit GrantedFolders(Ledger& toldLedger)
            : ledger(toldLedger)
        {
        }
        platform::Result<platform::Data> bookmarkData(
            platform::URL const& url, platform::BookmarkCreationOptions options) override;
        platform::Result<platform::URL> resolve(
            platform::Data const& bookmark, platform::BookmarkResolutionOptions options) override;
        bool startAccessingSecurityScopedResource(platform::URL const& url) override;
        void stopAccessingSecurityScopedResource(platform::URL const& url) override;
        void move(platform::URL const& from, std::optional<platform::URL> const& to);

        static std::string keyOf(platform::Data const& data) { return { data.bytes.begin(), data.bytes.end() }; }

        Ledger& ledger;
        std::map<std::string, BookmarkFacts> facts {};
    };

    class OpenPanel;

    MemoryClock m_clock;
    Ledger m_ledger { m_clock };
    MemoryTicker m_ticker;
    MemoryQueue m_mainQueue;
    Animator m_animator { m_clock, m_ticker, m_mainQueue };
    Log m_log;
    MemoryBundleFiles m_files;
    platform::Bundles m_bundles { m_files };
    Application m_application { m_ledger };
    Monitors m_monitors;
    Files m_fileManager;
    Machine m_hostInfo;
    Workspace m_workspace { m_ledger, m_mainQueue };
    GrantedFolders m_bookmarks { m_ledger };
    MemoryHotKeys m_hotKeys { m_ledger, m_mainQueue };
    MemorySymbolicHotKeys m_symbolicHotKeys;
    bool m_hasHotKeys = true;
    MemoryStatusBar m_statusBar { m_ledger };
    bool m_hasStatusBar = true;
    MemoryUpdates m_updates { m_ledger, m_mainQueue, m_bundles };
    MemoryScripts m_scripts { m_ledger };
    bool m_hasScripts = true;
    std::vector<std::weak_ptr<MemoryQueue>> m_serialQueues;
    std::optional<platform::NSScreen> m_screen;
    std::deque<PanelAnswer> m_panelAnswers;
    int m_unansweredPanels = 0;
};

} // namespace backends
