#include "backends/linux/x11/X11World.h"

#include "platform/appkit/NSApplication.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace backends {

using platform::NSScreen;

namespace {

// How long the right to come forward waits for a window to use it.
constexpr platform::Seconds activationTime { 2 };

// Directions of _NET_WM_MOVERESIZE: the eight edges, then moving.
constexpr std::uint32_t lastResizeDirection = 7;
constexpr std::uint32_t moveDirection = 8;
constexpr std::uint32_t fromApplication = 1;

} // namespace

X11World::X11World(std::unique_ptr<Connection> connection, platform::NSApplication& application, EventLoop& loop,
    Animator& animator, platform::Clock& clock)
    : m_application(application)
    , m_clock(clock)
    , m_connection(std::move(connection))
    , m_desktop(*m_connection)
    , m_screen(*m_connection, m_desktop)
    , m_keyboard(*m_connection)
    , m_monitors(*m_connection, m_keyboard)
    , m_buttons(*m_connection,
          [this] { forEachWindow([](X11Window& window) { window.liveResize().buttonsWereReleased(); }); })
    , m_finder(*m_connection,
          { .found =
                  [this](auto xid, auto origin) {
                      if (m_windows.contains(xid) || (m_asserted && m_asserted->xid() == xid))
                          return;
                      auto const found
                          = origin == WindowFinder::Origin::Made ? X11Window::Found::New : X11Window::Found::Existing;
                      insert(X11Window::create(m_context, xid, found, observeWindow()));
                  },
              .isKnownClient =
                  [this](auto base) {
                      return std::any_of(m_windows.begin(), m_windows.end(),
                          [&](auto const& entry) { return m_connection->clientBase(entry.first) == base; });
                  },
              .isKnownWindow = [this](auto xid) { return m_windows.contains(xid); } })
    , m_context { application, loop, animator, *m_connection, m_desktop, m_screen }
{
}

X11World::~X11World() = default;

template<typename Visit>
void X11World::forEachWindow(Visit visit)
{
    // A copy: a visit may report, and a report may lead anywhere.
    std::vector<std::shared_ptr<X11Window>> windows;
    for (auto const& [xid, window] : m_windows)
        windows.push_back(window);
    for (auto const& window : windows)
        visit(*window);
}

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
            },
        .compositorDidChange = [this] { forEachWindow([](X11Window& window) { window.compositorDidChange(); }); },
        .currentDesktopDidChange = {},
    });
    m_desktop.start();
    m_screen.start([this, screenDidChange = std::move(screenDidChange), scale = m_screen.scale()]() mutable {
        if (std::exchange(scale, m_screen.scale()) != m_screen.scale())
            forEachWindow([](X11Window& window) { window.scaleDidChange(); });
        screenDidChange();
    });
    m_keyboard.start([this] { m_monitors.keyboardDidChange(); });
    constexpr std::string_view waylandExtension = "XWAYLAND";
    auto const cookie = xcb_query_extension(
        m_connection->wire(), static_cast<std::uint16_t>(waylandExtension.size()), waylandExtension.data());
    m_connection->ask<xcb_query_extension_reply_t>(
        cookie.sequence, [this](auto const* reply) { m_isInsideWayland = reply && reply->present; });
    m_finder.start();
    // Some answers lead to a second question.
    m_connection->roundTrip();
    m_connection->roundTrip();
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

void X11World::handleEvent(xcb_generic_event_t const& event)
{
    m_desktop.handle(event);
    m_screen.handle(event);
    m_keyboard.handle(event);
    m_monitors.handle(event);
    m_buttons.handle(event);
    handleWindowEvent(event);
}

void X11World::handleWindowEvent(xcb_generic_event_t const& event)
{
    auto const root = m_connection->root();
    bool const isSent = (event.response_type & 0x80) != 0;
    switch (event.response_type & 0x7F) {
    case XCB_CREATE_NOTIFY:
        m_finder.handleCreate(reinterpret_cast<xcb_create_notify_event_t const&>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        handleDestroy(reinterpret_cast<xcb_destroy_notify_event_t const&>(event).window);
        break;
    // Children of the root tell everything twice, once to the root's listeners.
    case XCB_MAP_NOTIFY: {
        auto const& map = reinterpret_cast<xcb_map_notify_event_t const&>(event);
        if (auto const found = window(map.window); found && map.event == map.window)
            found->handleMap();
        break;
    }
    case XCB_UNMAP_NOTIFY: {
        auto const& unmap = reinterpret_cast<xcb_unmap_notify_event_t const&>(event);
        auto const found = window(unmap.window);
        if (found && isSent && unmap.event == root)
            found->handleWithdrawMessage();
        else if (found && unmap.event == unmap.window)
            found->handleUnmap();
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        auto const& reparent = reinterpret_cast<xcb_reparent_notify_event_t const&>(event);
        if (auto const found = window(reparent.window); found && reparent.event == reparent.window)
            found->handleReparent(reparent.parent);
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        auto const& configure = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        auto const found = window(configure.window);
        if (found && configure.event == configure.window)
            found->handleConfigure(configure, m_buttons.isDown());
        else if (!found && configure.event == root && configure.window != root)
            forEachWindow([&](X11Window& inside) { inside.handleParentConfigure(configure.window); });
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        auto const& property = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        if (auto const found = window(property.window))
            found->handleProperty(property.atom);
        break;
    }
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        handleFocus(reinterpret_cast<xcb_focus_in_event_t const&>(event));
        break;
    case XCB_CLIENT_MESSAGE:
        handleMessage(reinterpret_cast<xcb_client_message_event_t const&>(event));
        break;
    default:
        break;
    }
}

void X11World::handleFocus(xcb_focus_in_event_t const& event)
{
    // A grab takes the keyboard for a moment only, and below the window the focus is the toolkit's affair.
    if (event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB
        || event.detail == XCB_NOTIFY_DETAIL_INFERIOR || event.detail == XCB_NOTIFY_DETAIL_POINTER)
        return;
    if ((event.response_type & 0x7F) == XCB_FOCUS_IN)
        m_focused = event.event;
    else if (m_focused == event.event)
        m_focused = XCB_WINDOW_NONE;
    updateKeyWindow();
}

void X11World::handleMessage(xcb_client_message_event_t const& event)
{
    if (event.type != m_connection->atom(AtomName::NET_WM_MOVERESIZE) || event.format != 32)
        return;
    auto const found = window(event.window);
    // A toolkit that draws its own edges asks the window manager to drag one.
    if (found && found->wantsLiveResize() && m_buttons.isDown() && event.data.data32[2] <= lastResizeDirection)
        found->liveResize().start();
}

void X11World::handleDestroy(xcb_window_t xid)
{
    // Holds the window to the end of its last report.
    if (auto const found = window(xid))
        remove(found);
}

void X11World::remove(std::shared_ptr<X11Window> const& window)
{
    // Gone first: what the last report leads to must not find it any more.
    m_windows.erase(window->xid());
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
    if (found && found->isShown()) {
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
    if (auto const known = window(xid)) {
        known->readAll({});
        m_connection->roundTrip();
        known->announce();
    } else {
        m_asserted = X11Window::create(m_context, xid, X11Window::Found::Asserted, observeWindow());
        bool const isOwn = m_finder.isOwnTopLevel(xid);
        auto const asserted = std::exchange(m_asserted, nullptr);
        if (!isOwn) {
            asserted->forget();
            return false;
        }
        insert(asserted);
        asserted->announce();
    }
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

void X11World::activate() { m_activationEnd = m_clock.now() + activationTime; }

void X11World::connectionWasLost()
{
    forEachWindow(
        [this](X11Window& window) { remove(std::static_pointer_cast<X11Window>(window.shared_from_this())); });
}

} // namespace backends
