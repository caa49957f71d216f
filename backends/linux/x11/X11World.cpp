#include "backends/linux/x11/X11World.h"

#include "platform/appkit/NSApplication.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>
#include <xcb/randr.h>

namespace backends {

using platform::NSScreen;

namespace {

// How long the right to come forward waits for a window to use it.
constexpr platform::Seconds activationTime { 2 };

// A host that asks for a dialog waits for the server's news this long at most, each time.
constexpr std::chrono::milliseconds longestCatchUp { 100 };

// The direction of _NET_WM_MOVERESIZE that moves.
constexpr std::uint32_t moveDirection = 8;
constexpr std::uint32_t fromApplication = 1;

} // namespace

X11World::X11World(std::unique_ptr<Connection> connection, platform::NSApplication& application, EventLoop& loop,
    Animator& animator, platform::Clock& clock, platform::HotKeyModifierKeys const& modifierKeys)
    : m_application(application)
    , m_clock(clock)
    , m_connection(std::move(connection))
    , m_earlyHold(*m_connection)
    , m_serverClock(*m_connection)
    , m_desktop(*m_connection)
    , m_screen(*m_connection, m_desktop)
    , m_keyboard(*m_connection, modifierKeys)
    , m_monitors(*m_connection, m_keyboard)
    , m_hotKeys(*m_connection, m_keyboard, loop)
    , m_tray(*m_connection)
    , m_menu(*m_connection, loop, m_screen, m_keyboard)
    , m_buttons(*m_connection,
          [this] { forEachWindow([](X11Window& window) { window.liveResize().buttonsWereReleased(); }); })
    , m_finder(*m_connection,
          { .found =
                  [this](auto xid, auto origin) {
                      if (m_windows.contains(xid) || m_asserted.contains(xid))
                          return;
                      auto const found
                          = origin == WindowFinder::Origin::Made ? X11Window::Found::New : X11Window::Found::Existing;
                      insert(X11Window::create(m_context, xid, found, observeWindow()));
                  },
              .foundClient = [this](auto process) { m_earlyHold.start(process); },
              .isKnownClient =
                  [this](auto base) {
                      return std::any_of(m_windows.begin(), m_windows.end(),
                          [&](auto const& entry) { return m_connection->clientBase(entry.first) == base; });
                  },
              .isKnownWindow = [this](auto xid) { return m_windows.contains(xid); } })
    , m_context { application, loop, animator, *m_connection, m_desktop, m_screen, m_earlyHold }
{
}

X11World::~X11World() = default;

void X11World::start(std::function<void()> screenDidChange)
{
    m_connection->start([this](auto const& event) { handleEvent(event); }, [this] { connectionWasLost(); });
    std::uint32_t const mask
        = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection->wire(), m_connection->root(), XCB_CW_EVENT_MASK, &mask);
    m_desktop.setObserver({
        .activeWindowDidChange = [this] { updateKeyWindow(); },
        .windowManagerDidChange =
            [this] {
                forEachWindow([](X11Window& window) { window.windowManagerDidChange(); });
                updateKeyWindow();
                // The one before may have held a key.
                m_hotKeys.tryAgain();
            },
        .compositorDidChange = [this] { forEachWindow([](X11Window& window) { window.compositorDidChange(); }); },
        .currentDesktopDidChange = {},
    });
    m_desktop.start();
    m_screen.start([this, screenDidChange = std::move(screenDidChange), scale = m_screen.scale()]() mutable {
        if (auto const before = std::exchange(scale, m_screen.scale()); before != m_screen.scale())
            forEachWindow([&before](X11Window& window) { window.scaleDidChange(before); });
        screenDidChange();
    });
    m_keyboard.start([this] {
        m_monitors.keyboardDidChange();
        m_hotKeys.keyboardDidChange();
    });
    m_tray.start();
    askWhetherInsideWayland();
    m_finder.start();
    // Some answers lead to a second question.
    m_connection->roundTrip();
    m_connection->roundTrip();
}

void X11World::catchUp()
{
    // News of the window that has the keyboard leads to a question of what that window is.
    for (int i = 0; i < 2 && isAlive(); ++i)
        m_connection->roundTripWithin(longestCatchUp);
}

// Newer servers of that kind say so by an extension, older ones by what they call their screens.
void X11World::askWhetherInsideWayland()
{
    constexpr std::string_view name = "XWAYLAND";
    auto const extension
        = xcb_query_extension(m_connection->wire(), static_cast<std::uint16_t>(name.size()), name.data());
    m_connection->ask<xcb_query_extension_reply_t>(extension.sequence,
        [this](auto const* reply) { m_isInsideWayland = m_isInsideWayland || (reply && reply->present); });
    if (!m_connection->randr().isPresent)
        return;
    auto const screen = xcb_randr_get_screen_resources_current(m_connection->wire(), m_connection->root());
    m_connection->ask<xcb_randr_get_screen_resources_current_reply_t>(screen.sequence, [this, name](auto const* reply) {
        if (!reply || xcb_randr_get_screen_resources_current_outputs_length(reply) == 0)
            return;
        auto const output = xcb_randr_get_output_info(
            m_connection->wire(), xcb_randr_get_screen_resources_current_outputs(reply)[0], reply->config_timestamp);
        m_connection->ask<xcb_randr_get_output_info_reply_t>(output.sequence, [this, name](auto const* info) {
            auto const* const text = info ? reinterpret_cast<char const*>(xcb_randr_get_output_info_name(info)) : "";
            std::string_view const called(
                text, info ? static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info)) : 0);
            m_isInsideWayland = m_isInsideWayland || called.starts_with(name);
        });
    });
}

void X11World::findWindows() { m_finder.scan(); }

std::shared_ptr<X11Window> X11World::window(xcb_window_t xid) const
{
    auto const found = m_windows.find(xid);
    return found == m_windows.end() ? nullptr : found->second;
}

std::optional<NSScreen> X11World::mainScreen() const
{
    if (!isAlive())
        return std::nullopt;
    auto const key = std::dynamic_pointer_cast<X11Window>(m_application.keyWindow());
    return m_screen.mainScreen(key ? std::optional(key->visiblePixels()) : std::nullopt);
}

X11Window::Observer X11World::observeWindow()
{
    return {
        .didShow = [this](X11Window& window) { windowDidShow(window); },
        .didChange =
            [this](X11Window&) {
                updateWatching();
                updateKeyWindow();
            },
        .didRaise = [this](X11Window&) { m_activationEnd.reset(); },
        .hadGone =
            [this](X11Window& gone) {
                // Not before it is inserted: the one that is asserted is asked about anyway.
                if (auto const known = window(gone.xid()); known.get() == &gone)
                    remove(known);
            },
    };
}

void X11World::insert(std::shared_ptr<X11Window> window)
{
    m_windows[window->xid()] = window;
    m_application.insertWindow(window);
}

void X11World::windowDidShow(X11Window& window)
{
    auto const keepAlive = m_windows.find(window.xid());
    if (keepAlive != m_windows.end())
        m_monitors.windowDidShow(keepAlive->second);
    updateWatching();
    if (m_activationEnd && m_clock.now() <= *m_activationEnd)
        window.makeKeyAndOrderFront();
    m_activationEnd.reset();
    updateKeyWindow();
}

void X11World::remove(std::shared_ptr<X11Window> const& window)
{
    // Gone first: what the last report leads to must not find it any more.
    m_windows.erase(window->xid());
    m_earlyHold.forget(window->xid());
    m_monitors.windowDidGo(window->xid());
    window->handleDestroy();
    m_application.removeWindow(*window);
    if (m_focused == window->xid())
        m_focused = XCB_WINDOW_NONE;
    updateWatching();
}

void X11World::updateKeyWindow()
{
    auto const active = m_desktop.supports(AtomName::NET_ACTIVE_WINDOW) ? m_desktop.activeWindow() : m_focused;
    // A window that was not reported yet becomes key after its report.
    auto const found = window(active);
    if (found && found->mayBecomeKey()) {
        found->reportDidBecomeKey();
        return;
    }
    if (auto const key = m_application.keyWindow())
        key->reportDidResignKey();
}

void X11World::updateWatching()
{
    m_buttons.setWatched(std::any_of(
        m_windows.begin(), m_windows.end(), [](auto const& entry) { return entry.second->wantsLiveResize(); }));
}

bool X11World::announce(xcb_window_t xid)
{
    if (!isAlive())
        return false;
    // Whoever waits here is handed what the server said by then, a shortcut for one, and the host may announce another
    // window from inside that, or this one.
    if (auto const known = window(xid)) {
        known->readAll({});
        m_connection->roundTrip();
    } else {
        auto& asserted = m_asserted[xid];
        if (!asserted)
            asserted = X11Window::create(m_context, xid, X11Window::Found::Asserted, observeWindow());
        bool const isOwn = m_finder.isOwnTopLevel(xid);
        if (auto const decided = m_asserted.extract(xid)) {
            if (isOwn) {
                insert(decided.mapped());
                // It may have been mapped since it was asked.
                decided.mapped()->readPresence(X11Window::Unmapped::IsLeft);
            } else
                decided.mapped()->forget();
        }
    }
    // It may have gone meanwhile.
    auto const announced = window(xid);
    if (!announced)
        return false;
    announced->announce();
    // A window manager stands between the host's map request and the screen, and what is sent now is done by then.
    // Without one only an answer is a proof.
    if (!m_desktop.hasWindowManager())
        m_connection->roundTrip();
    else
        xcb_flush(m_connection->wire());
    return true;
}

bool X11World::beginMove(xcb_window_t xid, int rootX, int rootY, int button)
{
    auto const found = window(xid);
    if (!found || !found->isShown() || !found->isMovableByBackground()
        || !m_desktop.supports(AtomName::NET_WM_MOVERESIZE))
        return false;
    xcb_ungrab_pointer(m_connection->wire(), XCB_CURRENT_TIME);
    m_desktop.tellManager(xid, AtomName::NET_WM_MOVERESIZE,
        { static_cast<std::uint32_t>(rootX), static_cast<std::uint32_t>(rootY), moveDirection,
            static_cast<std::uint32_t>(button), fromApplication });
    return true;
}

std::unique_ptr<X11TrayIcon> X11World::makeTrayIcon(X11TrayIcon::Identity const& identity,
    std::weak_ptr<platform::NSView> view, X11TrayIcon::Observer observer, platform::OSLog const& log)
{
    return std::make_unique<X11TrayIcon>(
        *m_connection, m_context.loop, m_tray, identity, std::move(view), std::move(observer), log);
}

void X11World::activate() { m_activationEnd = m_clock.now() + activationTime; }

void X11World::connectionWasLost()
{
    m_hotKeys.connectionWasLost();
    m_menu.close();
    m_tray.connectionWasLost();
    forEachWindow(
        [this](X11Window& window) { remove(std::static_pointer_cast<X11Window>(window.shared_from_this())); });
}

void X11World::makeWayForDialog(std::optional<xcb_window_t> parent)
{
    forEachWindow([&](X11Window& window) { window.setStepsAside(window.xid() != parent); });
}

void X11World::dialogHasClosed()
{
    forEachWindow([](X11Window& window) { window.setStepsAside(false); });
}

} // namespace backends
