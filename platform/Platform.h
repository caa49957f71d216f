#pragma once

#include "platform/appkit/Forward.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/Forward.h"

#include <memory>
#include <optional>
#include <string>

namespace platform {

class Bookmarks;
class EventHotKeys;
class FileManager;
class HostInfo;
class LogSink;
class NSAppleScripts;
class Queue;
class SPUStandardUpdaterController;
class SPUUpdaterDelegate;
class SymbolicHotKeys;
enum class StartingUpdater;

// The lender of everything that needs a world: one object of a backend, chosen at start and alive to the end. A
// service that a world does not have is lent as null. Main thread only, but for the log, the queues, sleeping and
// scripts.
class Platform {
public:
    virtual ~Platform() = default;

    // The installed one; fatal before install. Only the plug-in's exports read it, everything else is handed its
    // Platform.
    static Platform& current();
    static bool isInstalled();
    // Once a process, before any class of a plug-in is made. The calling thread becomes the main thread.
    static void install(std::unique_ptr<Platform> platform);

    virtual LogSink& logSink() = 0;
    virtual Clock& clock() = 0;
    virtual Queue& mainQueue() = 0;
    virtual std::unique_ptr<Queue> makeSerialQueue(std::string const& label) = 0;
    // Holds up the serial queue whose work calls it (NSThread). The last thing that a piece of work does: in a world
    // whose clock is moved by hand the call returns at once, and the queue's next piece waits.
    virtual void sleepForTimeInterval(Seconds interval) = 0;

    virtual Bundles& bundles() = 0;
    virtual FileManager& fileManager() = 0;
    virtual HostInfo& hostInfo() = 0;

    virtual NSApplication& application() = 0;
    virtual NSEventMonitors& eventMonitors() = 0;
    virtual NSAnimationContext& animationContext() = 0;
    virtual std::optional<NSScreen> mainScreen() = 0;

    virtual std::unique_ptr<NSOpenPanel> makeOpenPanel();
    virtual NSWorkspace* workspace() { return nullptr; }
    virtual Bookmarks* bookmarks() { return nullptr; }
    virtual EventHotKeys* eventHotKeys() { return nullptr; }
    virtual NSStatusBar* statusBar() { return nullptr; }
    virtual SymbolicHotKeys* symbolicHotKeys() { return nullptr; }
    // initWithStartingUpdater:updaterDelegate:userDriverDelegate: without the last, which no world asks. The delegate
    // may be null. Null where nothing can be updated.
    virtual std::unique_ptr<SPUStandardUpdaterController> makeStandardUpdaterController(
        StartingUpdater startingUpdater, std::weak_ptr<SPUUpdaterDelegate> updaterDelegate);
    virtual NSAppleScripts* appleScripts() { return nullptr; }
};

} // namespace platform
