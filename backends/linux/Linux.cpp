#include "backends/linux/Linux.h"

#include "backends/linux/LinuxApplication.h"
#include "backends/linux/dbus/Hostname.h"
#include "backends/linux/host/BundleDirectory.h"
#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/MachineInfo.h"
#include "backends/linux/host/StandardErrorLog.h"
#include "backends/linux/host/Workspace.h"
#include "backends/linux/loop/DisplayTicker.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/MainQueue.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "backends/linux/loop/SerialQueue.h"
#include "backends/linux/x11/X11World.h"
#include "backends/shared/Animator.h"
#include "platform/appkit/NSEventMonitors.h"
#include "platform/foundation/Bundles.h"

#include <utility>

namespace backends {

using platform::EventMask;
using platform::NSEventMonitor;
using platform::OSLog;

namespace {

// The name in the log of an app that has no identifier.
constexpr auto namelessSubsystem = "app.quorvel.iosapp";

// Without a server no key can be watched.
class NoEventMonitors : public platform::NSEventMonitors {
public:
    std::shared_ptr<NSEventMonitor> addLocalMonitorForEventsMatchingMask(
        EventMask, std::set<std::uint16_t>, Handler) override
    {
        return nullptr;
    }
};

class LinuxWorld final : public LinuxPlatform {
public:
    LinuxWorld(std::unique_ptr<EventLoop> loop, LinuxOptions const& options)
        : m_loop(std::move(loop))
        , m_mainQueue(*m_loop)
        , m_ticker(*m_loop, m_clock)
        , m_animator(m_clock, m_ticker, m_mainQueue)
        , m_application(*m_loop)
        , m_subsystem(options.bundleIdentifier.value_or(namelessSubsystem))
        , m_hostname(*m_loop, Bus::systemAddress())
        , m_machineInfo({}, [this] { return m_hostname.prettyName(); })
        , m_workspace(*m_loop, log("workspace"))
        , m_bundleDirectory(log("bundle"))
        , m_bundles(m_bundleDirectory)
    {
        auto const folder = options.mainBundlePath ? options.mainBundlePath : folderOfExecutable();
        m_bundles.setMainBundle(folder.value_or("/"), options.bundleIdentifier);
        connect(options);
    }

    platform::LogSink& logSink() override { return m_log; }
    platform::Clock& clock() override { return m_clock; }
    platform::Queue& mainQueue() override { return m_mainQueue; }
    std::unique_ptr<platform::Queue> makeSerialQueue(std::string const& label) override
    {
        return std::make_unique<SerialQueue>(label);
    }
    platform::Bundles& bundles() override { return m_bundles; }
    platform::FileManager& fileManager() override { return m_fileSystem; }
    platform::HostInfo& hostInfo() override { return m_machineInfo; }
    platform::NSApplication& application() override { return m_application; }
    platform::NSAnimationContext& animationContext() override { return m_animator; }
    platform::NSWorkspace* workspace() override { return &m_workspace; }
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
    void setComposingText(bool isComposing) override
    {
        if (m_x11)
            m_x11->eventMonitors().setComposingText(isComposing);
    }
    HotKeyTruth hotKeyTruth() const override { return {}; }
    void setHotKeyTruthHandler(std::function<void()>) override { }
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
        m_x11 = std::make_unique<X11World>(connection.take(), m_application, *m_loop, m_animator, m_clock);
        m_x11->start([this] { m_ticker.setRefreshRate(m_x11->screen().refreshRate()); });
        m_application.setActivateHandler([this] { m_x11->activate(); });
        // From the loop, when the plug-in is there to hear of the windows.
        m_mainQueue.async([this] { m_x11->findWindows(); });
    }

    std::unique_ptr<EventLoop> m_loop;
    StandardErrorLog m_log;
    MonotonicClock m_clock;
    MainQueue m_mainQueue;
    DisplayTicker m_ticker;
    Animator m_animator;
    LinuxApplication m_application;
    std::string m_subsystem;
    Hostname m_hostname;
    MachineInfo m_machineInfo;
    FileSystem m_fileSystem;
    Workspace m_workspace;
    BundleDirectory m_bundleDirectory;
    platform::Bundles m_bundles;
    NoEventMonitors m_noMonitors;
    std::unique_ptr<X11World> m_x11;
};

} // namespace

platform::Result<std::unique_ptr<LinuxPlatform>> makeLinuxPlatform(LinuxOptions options)
{
    auto loop = EventLoop::create();
    if (!loop)
        return loop.error();
    return std::unique_ptr<LinuxPlatform>(std::make_unique<LinuxWorld>(loop.take(), options));
}

} // namespace backends
