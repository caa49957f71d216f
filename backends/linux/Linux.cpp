#include "backends/linux/Linux.h"

#include "backends/linux/LinuxApplication.h"
#include "backends/linux/LinuxHotKeys.h"
#include "backends/linux/LinuxMail.h"
#include "backends/linux/LinuxOpenPanel.h"
#include "backends/linux/LinuxStatusBar.h"
#include "backends/linux/LinuxUpdates.h"
#include "backends/linux/LinuxWorkspace.h"
#include "backends/linux/SystemShortcuts.h"
#include "backends/linux/dbus/Hostname.h"
#include "backends/linux/host/BundleDirectory.h"
#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/FolderBookmarks.h"
#include "backends/linux/host/IconRenderings.h"
#include "backends/linux/host/MachineInfo.h"
#include "backends/linux/host/ScriptEngine.h"
#include "backends/linux/host/SystemLog.h"
#include "backends/linux/loop/DisplayTicker.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/MainQueue.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "backends/linux/loop/NestedLoop.h"
#include "backends/linux/loop/SerialQueue.h"
#include "backends/linux/x11/KeyLabel.h"
#include "backends/linux/x11/X11World.h"
#include "backends/shared/Animator.h"
#include "backends/shared/StandardUpdaterController.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/appkit/NSImage.h"
#include "platform/foundation/Bundles.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <set>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace backends {

using platform::EventMask;
using platform::NSEventMonitor;
using platform::OSLog;

namespace {

// The name in the log of an app that has no identifier.
constexpr auto namelessSubsystem = "app.quorvel.iosapp";
// What every icon theme has for a program.
constexpr auto standInIconName = "application-x-executable";

bool isWaylandSession()
{
    auto const* const display = std::getenv("WAYLAND_DISPLAY");
    auto const* const type = std::getenv("XDG_SESSION_TYPE");
    return (display && *display) || (type && std::string_view(type) == "wayland");
}

// Without a server no key can be watched.
class NoEventMonitors : public platform::NSEventMonitors {
public:
    std::shared_ptr<NSEventMonitor> addLocalMonitorForEventsMatchingMask(
        EventMask, std::set<std::uint16_t>, Handler, Consumption) override
    {
        return nullptr;
    }
};

class LinuxWorld final : public LinuxPlatform {
public:
    LinuxWorld(std::unique_ptr<EventLoop> loop, LinuxOptions const& options)
        : m_loop(std::move(loop))
        , m_sessionBus(greetSessionBus())
        , m_mainQueue(*m_loop)
        , m_ticker(*m_loop, m_clock)
        , m_animator(m_clock, m_ticker, m_mainQueue)
        , m_application(*m_loop)
        , m_subsystem(options.bundleIdentifier.value_or(namelessSubsystem))
        , m_appName(options.appName.value_or(m_subsystem.substr(m_subsystem.rfind('.') + 1)))
        , m_hostname(*m_loop, Bus::systemAddress())
        , m_machineInfo({}, [this] { return m_hostname.prettyName(); })
        , m_nestedLoop(*m_loop)
        , m_folderDialogs(*m_loop, m_nestedLoop, folderDialogs(options), log("picker"))
        , m_workspace(*m_loop,
              { Bus::sessionAddress(), options.bundleIdentifier.value_or(""), [this] { return keyWindow(); } },
              log("workspace"))
        , m_mail(*m_loop, m_mainQueue, mailOptions(options), log("mail"))
        , m_scripts(m_mail.functions(), scriptLimits(options))
        , m_bundleDirectory(log("bundle"))
        , m_bundles(m_bundleDirectory)
        , m_systemShortcuts(
              options.hotKeyModifiers, [this](std::uint32_t keysym) { return positionsOf(keysym); }, log("shortcuts"))
    {
        auto const folder = options.mainBundlePath ? options.mainBundlePath : folderOfExecutable();
        m_bundles.setMainBundle(folder.value_or("/"), options.bundleIdentifier);
        m_loop->atEndOfTurn([this] {
            m_keyWindow = keyWindow().value_or(XCB_WINDOW_NONE);
            return false;
        });
        connect(options);
        makeHotKeys(options);
        makeStatusBar();
    }

    platform::LogSink& logSink() override { return m_log; }
    platform::Clock& clock() override { return m_clock; }
    platform::Queue& mainQueue() override { return m_mainQueue; }
    std::unique_ptr<platform::Queue> makeSerialQueue(std::string const& label) override
    {
        return std::make_unique<SerialQueue>(label);
    }
    void sleepForTimeInterval(platform::Seconds interval) override { std::this_thread::sleep_for(interval); }
    platform::Bundles& bundles() override { return m_bundles; }
    platform::FileManager& fileManager() override { return m_fileSystem; }
    platform::HostInfo& hostInfo() override { return m_machineInfo; }
    platform::NSApplication& application() override { return m_application; }
    platform::NSAnimationContext& animationContext() override { return m_animator; }
    std::unique_ptr<platform::NSOpenPanel> makeOpenPanel() override
    {
        return std::make_unique<LinuxOpenPanel>(m_folderDialogs);
    }
    platform::Bookmarks* bookmarks() override { return &m_bookmarks; }
    platform::NSWorkspace* workspace() override { return &m_workspace; }
    platform::NSAppleScripts* appleScripts() override { return &m_scripts; }
    platform::EventHotKeys* eventHotKeys() override { return m_hotKeys.get(); }
    platform::NSStatusBar* statusBar() override { return m_statusBar.get(); }
    platform::SymbolicHotKeys* symbolicHotKeys() override { return &m_systemShortcuts; }
    std::unique_ptr<platform::SPUStandardUpdaterController> makeStandardUpdaterController(
        platform::StartingUpdater startingUpdater, std::weak_ptr<platform::SPUUpdaterDelegate> delegate) override
    {
        // One world for all controllers: they replace the same app.
        if (!m_updates) {
            m_updates = std::make_unique<LinuxUpdates>(
                LinuxUpdates::Surroundings { *m_loop, m_mainQueue, m_bundles, m_workspace, m_appName,
                    Bus::sessionAddress(), [this] { m_application.terminate(); }, m_bundleDirectory.userLanguages() },
                log("updates"));
        }
        return std::make_unique<StandardUpdaterController>(
            std::make_shared<Updater>(*m_updates, m_updates->userDriver(), log("updates"), std::move(delegate)),
            startingUpdater);
    }
    platform::NSEventMonitors& eventMonitors() override
    {
        if (m_x11)
            return m_x11->eventMonitors();
        return m_noMonitors;
    }
    std::optional<platform::NSScreen> mainScreen() override { return m_x11 ? m_x11->mainScreen() : std::nullopt; }

    int pollableDescriptor() const override { return m_loop->pollableDescriptor(); }
    void dispatch() override { m_loop->dispatch(); }

    WindowReach windowReach() const override
    {
        if (!m_x11 || !m_x11->isAlive())
            return WindowReach::Unreachable;
        return m_x11->isInsideWayland() ? WindowReach::XWayland : WindowReach::X11;
    }
    bool announceX11Window(std::uint32_t xid) override { return m_x11 && m_x11->announce(xid); }
    std::shared_ptr<platform::NSWindow> adoptX11Window(std::uint32_t xid) override
    {
        return m_x11 ? m_x11->window(xid) : nullptr;
    }
    std::optional<std::uint32_t> x11Window(platform::NSWindow const& window) const override
    {
        auto const* known = dynamic_cast<X11Window const*>(&window);
        if (!known || !m_x11 || m_x11->window(known->xid()).get() != known)
            return std::nullopt;
        return known->xid();
    }
    bool beginMove(std::uint32_t xid, int rootX, int rootY, int button) override
    {
        return m_x11 && m_x11->beginMove(xid, rootX, rootY, button);
    }
    std::optional<std::uint32_t> virtualKeyCode(std::uint32_t x11Keycode) const override
    {
        if (!m_x11 || x11Keycode > std::numeric_limits<xcb_keycode_t>::max())
            return std::nullopt;
        return m_x11->keyboard().map()->virtualKeyCode(static_cast<xcb_keycode_t>(x11Keycode));
    }
    std::optional<std::string> keyLabel(std::uint32_t virtualKeyCode) const override
    {
        auto const symbol = m_x11 ? m_x11->keyboard().map()->symbol(virtualKeyCode) : std::nullopt;
        return symbol ? backends::keyLabel(*symbol) : std::nullopt;
    }
    platform::NSEventModifierFlags hotKeyModifiers(std::uint32_t x11State) const override
    {
        using Flags = platform::NSEventModifierFlags;
        // The rest of the state are buttons, the layout, and what toolkits add.
        auto const flags = m_x11 ? m_x11->keyboard().modifierFlags(static_cast<std::uint8_t>(x11State)) : Flags {};
        return flags & (Flags::command | Flags::option | Flags::control | Flags::shift);
    }
    void setComposingText(bool isComposing) override
    {
        if (m_x11)
            m_x11->eventMonitors().setComposingText(isComposing);
    }
    void setNestedIteration(std::function<void()> iterate) override { m_nestedLoop.setIteration(std::move(iterate)); }
    bool hasNestedIteration() const override { return m_nestedLoop.hasIteration(); }
    void setTerminateHandler(std::function<void()> handler) override
    {
        m_application.setTerminateHandler(std::move(handler));
    }

private:
    OSLog log(std::string const& category) { return OSLog(m_log, m_subsystem, category); }

    void connect(LinuxOptions const& options)
    {
        auto connection = Connection::open(options.display, *m_loop, log("x11"));
        if (!connection) {
            log("x11").error("no windows: %{public}s", { connection.error().localizedDescription });
            return;
        }
        m_x11 = std::make_unique<X11World>(
            connection.take(), m_application, *m_loop, m_animator, m_clock, options.hotKeyModifiers);
        m_x11->start([this] { m_ticker.setRefreshRate(m_x11->screen().refreshRate()); });
        m_application.setActivateHandler([this] { m_x11->activate(); });
        // From the loop, when the plug-in is there to hear of the windows.
        m_mainQueue.async([this] { m_x11->findWindows(); });
    }

    void makeHotKeys(LinuxOptions const& options)
    {
        LinuxHotKeys::Session session;
        session.x11 = m_x11.get();
        session.isWayland = isWaylandSession() || (m_x11 && m_x11->isInsideWayland());
        session.appID = options.bundleIdentifier.value_or("");
        session.description = options.hotKeyDescription;
        session.modifierKeys = options.hotKeyModifiers;
        session.findHolder = [this](std::uint32_t keyCode, std::uint32_t modifiers, auto found) {
            // Reading settings takes a while.
            m_background.async([this, keyCode, modifiers, found = std::move(found)] {
                auto const holder = m_systemShortcuts.holderOf(keyCode, modifiers).value_or("");
                m_mainQueue.async([found, holder] { found(holder); });
            });
        };
        m_hotKeys = std::make_unique<LinuxHotKeys>(std::move(session), *m_loop, m_mainQueue, log("hotkeys"));
    }

    static ScriptEngine::Limits scriptLimits(LinuxOptions const& options)
    {
        ScriptEngine::Limits limits;
        limits.time = options.scriptTime;
        return limits;
    }

    LinuxMail::Options mailOptions(LinuxOptions const& options)
    {
        LinuxMail::Options mail;
        mail.busAddress = Bus::sessionAddress();
        mail.appID = options.bundleIdentifier.value_or("");
        mail.parentWindow = [this]() -> std::optional<std::uint32_t> {
            auto const window = m_keyWindow.load();
            return window != XCB_WINDOW_NONE ? std::optional(window) : std::nullopt;
        };
        return mail;
    }

    std::unique_ptr<Bus> greetSessionBus()
    {
        auto bus = Bus::connect(*m_loop, Bus::sessionAddress());
        return bus ? bus.take() : nullptr;
    }

    void makeStatusBar()
    {
        LinuxStatusBar::Options bar;
        bar.busAddress = Bus::sessionAddress();
        bar.id = m_subsystem;
        bar.title = m_appName;
        bar.renderings = [this](platform::NSImage const& image) { return renderings(image); };
        bar.standInIconName = standInIconName;
        bar.x11 = m_x11.get();
        bar.userDidAct = [this](auto const& activationToken) {
            if (m_x11)
                m_x11->userDidAct(activationToken);
        };
        m_statusBar
            = std::make_unique<LinuxStatusBar>(*m_loop, std::move(bar), log("statusitem"), std::move(m_sessionBus));
    }

    std::vector<IconRendering> renderings(platform::NSImage const& image)
    {
        auto const found = readIconRenderings(image.url().filePath().value_or(""));
        if (!found) {
            log("statusitem").error("no icon: %{public}s", { found.error().localizedDescription });
            return {};
        }
        return found.value();
    }

    std::vector<std::uint16_t> positionsOf(std::uint32_t keysym) const
    {
        return m_x11 ? m_x11->keyboard().map()->virtualKeyCodes(keysym) : std::vector<std::uint16_t> {};
    }

    FolderDialogs::Options folderDialogs(LinuxOptions const& options)
    {
        auto const ifX11 = [this](auto work) {
            if (m_x11)
                work(*m_x11);
        };
        return { Bus::sessionAddress(), options.bundleIdentifier.value_or(""),
            [this, ifX11] {
                // The host may be handling a click into a window of which the server's news waits here.
                ifX11([](X11World& world) { world.catchUp(); });
                return keyWindow();
            },
            [ifX11](auto parent) { ifX11([parent](X11World& world) { world.makeWayForDialog(parent); }); },
            [ifX11] { ifX11([](X11World& world) { world.dialogHasClosed(); }); } };
    }

    std::optional<std::uint32_t> keyWindow() const
    {
        auto const key = m_application.keyWindow();
        return key ? x11Window(*key) : std::nullopt;
    }

    // As of the last turn of the loop, for other threads, which must not wait for this one.
    std::atomic<xcb_window_t> m_keyWindow = XCB_WINDOW_NONE;
    std::unique_ptr<EventLoop> m_loop;
    // For the status bar: first of all, since it answers while the X server does.
    std::unique_ptr<Bus> m_sessionBus;
    SystemLog m_log;
    MonotonicClock m_clock;
    MainQueue m_mainQueue;
    DisplayTicker m_ticker;
    Animator m_animator;
    LinuxApplication m_application;
    std::string m_subsystem;
    std::string m_appName;
    Hostname m_hostname;
    MachineInfo m_machineInfo;
    FileSystem m_fileSystem;
    NestedLoop m_nestedLoop;
    FolderDialogs m_folderDialogs;
    LinuxWorkspace m_workspace;
    FolderBookmarks m_bookmarks;
    LinuxMail m_mail;
    ScriptEngine m_scripts;
    BundleDirectory m_bundleDirectory;
    platform::Bundles m_bundles;
    NoEventMonitors m_noMonitors;
    std::unique_ptr<X11World> m_x11;
    SystemShortcuts m_systemShortcuts;
    std::unique_ptr<LinuxHotKeys> m_hotKeys;
    std::unique_ptr<LinuxStatusBar> m_statusBar;
    std::unique_ptr<LinuxUpdates> m_updates;
    // Last, so that its work has ended before anything that it uses.
    SerialQueue m_background { "hotkeys" };
};

} // namespace

platform::Result<std::unique_ptr<LinuxPlatform>> makeLinuxPlatform(LinuxOptions options)
{
    auto const& keys = options.hotKeyModifiers;
    if (std::set { keys.command, keys.option, keys.control, keys.shift }.size() < 4)
        return platform::NSError { "Linux", 1, "one key stands for two modifiers of hot keys" };
    auto loop = EventLoop::create();
    if (!loop)
        return loop.error();
    return std::unique_ptr<LinuxPlatform>(std::make_unique<LinuxWorld>(loop.take(), options));
}

} // namespace backends
