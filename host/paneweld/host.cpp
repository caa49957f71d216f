#include "paneweld/host.hpp"

#include "backends/linux/Linux.h"
#include "platform/Version.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWindow.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/carbon/EventHotKeys.h"
#include "platform/foundation/Bookmark.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"
#include "platform/foundation/MainThread.h"
#include "platform/log/OSLog.h"

#include <cstring>
#include <link.h>
#include <poll.h>
#include <vector>

namespace paneweld {

using platform::NSError;
using platform::Result;

namespace {

constexpr char const* errorDomain = "Host";

// The paths of all files in this process that are this library, under whatever path they were loaded.
std::vector<std::string> loadedCopies()
{
    std::vector<std::string> paths;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* found) {
            auto const* const name = std::strrchr(info->dlpi_name, '/');
            if (name && std::strncmp(name, "/libpaneweld.so", 15) == 0)
                static_cast<std::vector<std::string>*>(found)->emplace_back(info->dlpi_name);
            return 0;
        },
        &paths);
    return paths;
}

// Two copies would mean two notification centres: host and plug-in would not hear each other.
std::optional<NSError> secondCopy()
{
    auto const copies = loadedCopies();
    if (copies.size() < 2)
        return std::nullopt;
    std::string sentence = "the library is in this process more than once:";
    for (auto const& copy : copies)
        sentence += " " + copy;
    return NSError { errorDomain, 2, sentence };
}

} // namespace

struct Host::Private {
    // Owned by Platform::install, which never lets it go.
    backends::LinuxPlatform* platform = nullptr;
    std::shared_ptr<platform::Bundle> framework {};
    bool isRunning = false;
};

Host::Host()
    : m_private(std::make_unique<Private>())
{
}

Host::~Host()
{
    setTerminateHandler({});
    setShortcutTruthHandler({});
    setStatusItemPlaceHandler({});
    setNestedIteration({});
    setOpenHandler({});
}

Result<std::unique_ptr<Host>> Host::start(HostOptions options)
{
    if (platform::Platform::isInstalled())
        return NSError { errorDomain, 1, "a host was started in this process already" };
    if (auto error = secondCopy())
        return *error;
    auto made = backends::makeLinuxPlatform({ options.display, options.mainBundlePath, options.bundleIdentifier,
        options.shortcutModifiers, options.appName, options.shortcutDescription });
    if (!made)
        return made.error();

    auto host = std::unique_ptr<Host>(new Host);
    auto platform = made.take();
    host->m_private->platform = platform.get();
    platform::Platform::install(std::move(platform));

    auto& bundles = host->m_private->platform->bundles();
    if (options.frameworkPath && !NSBundle::paneweld(bundles)) {
        // Known by being made, so that it is among the frameworks that the look-up goes through.
        host->m_private->framework
            = bundles.bundle(platform::URL::fileURL(*options.frameworkPath, platform::URL::IsDirectory::Yes));
    }
    if (host->windowReach() == WindowReach::XWayland) {
        platform::OSLog(host->m_private->platform->logSink(), "app.quorvel.iosapp", "host")
            .error("native Wayland windows are out of reach: run the toolkit on X (GDK_BACKEND=x11, "
                   "QT_QPA_PLATFORM=xcb, SDL_VIDEODRIVER=x11)");
    }
    return host;
}

std::shared_ptr<platform::Bundle> Host::plugin() const { return NSBundle::paneweld(m_private->platform->bundles()); }

int Host::pollableDescriptor() const { return m_private->platform->pollableDescriptor(); }

void Host::dispatch()
{
    platform::assertMainThread("Host.dispatch");
    m_private->platform->dispatch();
}

void Host::run()
{
    m_private->isRunning = true;
    while (m_private->isRunning) {
        pollfd descriptor { pollableDescriptor(), POLLIN, 0 };
        poll(&descriptor, 1, -1);
        dispatch();
    }
}

void Host::stop() { m_private->isRunning = false; }

void Host::setNestedIteration(std::function<void()> iterate)
{
    m_private->platform->setNestedIteration(std::move(iterate));
}

ModalWindows Host::modalWindows() const
{
    return m_private->platform->hasNestedIteration() ? ModalWindows::Live : ModalWindows::FrozenWhileOpen;
}

WindowReach Host::windowReach() const
{
    switch (m_private->platform->windowReach()) {
    case backends::WindowReach::X11:
        return WindowReach::X11;
    case backends::WindowReach::XWayland:
        return WindowReach::XWayland;
    case backends::WindowReach::Unreachable:
        break;
    }
    return WindowReach::Unreachable;
}

bool Host::announceWindow(std::uint32_t xid) { return m_private->platform->announceX11Window(xid); }

std::optional<std::uint32_t> Host::nativeHandle(platform::NSWindow const& window) const
{
    return m_private->platform->x11Window(window);
}

std::shared_ptr<platform::NSWindow> Host::window(std::uint32_t xid) const
{
    return m_private->platform->adoptX11Window(xid);
}

bool Host::beginWindowMove(std::uint32_t xid, int rootX, int rootY, int button)
{
    return m_private->platform->beginMove(xid, rootX, rootY, button);
}

platform::HotKeyTruth Host::shortcutTruth() const { return m_private->platform->eventHotKeys()->truth(); }

void Host::setShortcutTruthHandler(std::function<void()> handler)
{
    m_private->platform->eventHotKeys()->setTruthHandler(std::move(handler));
}

std::optional<std::uint32_t> Host::virtualKeyCode(std::uint32_t x11Keycode) const
{
    return m_private->platform->virtualKeyCode(x11Keycode);
}

std::optional<std::string> Host::keyLabel(std::uint32_t virtualKeyCode) const
{
    return m_private->platform->keyLabel(virtualKeyCode);
}

platform::NSEventModifierFlags Host::shortcutModifiers(std::uint32_t x11State) const
{
    return m_private->platform->hotKeyModifiers(x11State);
}

platform::StatusItemPlace Host::statusItemPlace() const { return m_private->platform->statusBar()->place(); }

std::optional<platform::Rect> Host::statusItemPressedFrame() const
{
    return m_private->platform->statusBar()->pressedFrame();
}

void Host::setStatusItemPlaceHandler(std::function<void()> handler)
{
    m_private->platform->statusBar()->setPlaceHandler(std::move(handler));
}

Result<platform::Data> Host::bookmarkData(platform::URL const& url)
{
    return m_private->platform->bookmarks()->bookmarkData(url, platform::BookmarkCreationOptions::WithSecurityScope);
}

Result<platform::URL> Host::resolveBookmark(platform::Data const& bookmark)
{
    return m_private->platform->bookmarks()->resolve(bookmark, platform::BookmarkResolutionOptions::WithSecurityScope);
}

void Host::setOpenHandler(std::function<void(platform::URL const&, std::optional<NSError> const&)> handler)
{
    m_private->platform->workspace()->setOpenHandler(std::move(handler));
}

void Host::setMainMenu(std::shared_ptr<platform::NSMenu> menu)
{
    m_private->platform->application().setMainMenu(std::move(menu));
}

void Host::setComposingText(bool isComposing) { m_private->platform->setComposingText(isComposing); }

void Host::setTerminateHandler(std::function<void()> handler)
{
    m_private->platform->setTerminateHandler(std::move(handler));
}

void Host::setNotificationTap(std::function<void(platform::Notification const&)> tap)
{
    platform::NotificationCenter::defaultCenter().setTap(std::move(tap));
}

char const* libraryVersion() { return platform::libraryVersion(); }

} // namespace paneweld
