#include "backends/linux/x11/X11Screen.h"

#include "backends/linux/x11/PropertyValues.h"
#include "backends/linux/x11/X11Desktop.h"

#include <algorithm>
#include <span>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

namespace backends {

using platform::NSScreen;

namespace {

// More desktops than this have no work areas of their own here.
constexpr std::uint32_t maximumDesktops = 32;

std::vector<PixelRect> rectsOf(xcb_get_property_reply_t const* reply)
{
    std::vector<PixelRect> rects;
    auto const words = wordsOf(reply);
    for (std::size_t i = 0; i + 4 <= words.size(); i += 4) {
        rects.push_back({ pixelsIn(words[i]), pixelsIn(words[i + 1]), pixelsIn(words[i + 2]), pixelsIn(words[i + 3]) });
    }
    return rects;
}

std::int64_t areaOf(PixelRect const& rect) { return std::int64_t { rect.width } * rect.height; }

} // namespace

X11Screen::X11Screen(Connection& connection, X11Desktop const& desktop)
    : m_connection(connection)
    , m_desktop(desktop)
    , m_scale { 1, connection.screen().height_in_pixels }
    , m_rootWidth(connection.screen().width_in_pixels)
    , m_edges(connection)
{
}

void X11Screen::start(std::function<void()> didChange)
{
    m_didChange = std::move(didChange);
    if (m_connection.randr().isPresent) {
        xcb_randr_select_input(m_connection.wire(), m_connection.root(),
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE
                | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    if (m_connection.fixes().isPresent) {
        xcb_xfixes_select_selection_input(m_connection.wire(), m_connection.root(), m_connection.atoms().settings(),
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    readMonitors();
    readRefreshRate();
    readWorkAreas();
    readResources();
    readSettingsOwner();
}

void X11Screen::handle(xcb_generic_event_t const& event)
{
    auto const type = event.response_type & 0x7F;
    if (type == XCB_PROPERTY_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_property_notify_event_t const&>(event);
        handlePropertyChange(change.window, change.atom);
        return;
    }
    if (type == XCB_CONFIGURE_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_configure_notify_event_t const&>(event);
        if (change.window != m_connection.root())
            return;
        m_rootWidth = change.width;
        setRootHeight(change.height);
        // Monitors that a user parts by hand are announced by nothing else.
        readMonitors();
        return;
    }
    if (m_connection.fixes().isPresent && type == m_connection.fixes().firstEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        auto const& change = reinterpret_cast<xcb_xfixes_selection_notify_event_t const&>(event);
        if (change.selection == m_connection.atoms().settings())
            followSettingsOwner(change.owner);
        return;
    }
    if (!m_connection.randr().isPresent)
        return;
    if (type == m_connection.randr().firstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY
        || type == m_connection.randr().firstEvent + XCB_RANDR_NOTIFY) {
        readMonitors();
        readRefreshRate();
    }
}

void X11Screen::handlePropertyChange(xcb_window_t window, xcb_atom_t property)
{
    if (window == m_settingsOwner && property == m_connection.atom(AtomName::XSETTINGS_SETTINGS))
        return readSettings();
    if (window != m_connection.root())
        return;
    if (property == m_connection.atom(AtomName::NET_WORKAREA) || m_monitorWorkAreaAtoms.contains(property))
        readWorkAreas();
    else if (property == m_connection.atom(AtomName::NET_CLIENT_LIST))
        readEdges(ScreenEdges::Windows::New);
    else if (property == XCB_ATOM_RESOURCE_MANAGER)
        readResources();
}

void X11Screen::readMonitors()
{
    if (!m_connection.randr().isPresent)
        return;
    auto const cookie = xcb_randr_get_monitors(m_connection.wire(), m_connection.root(), 1);
    m_connection.ask<xcb_randr_get_monitors_reply_t>(cookie.sequence, [this](auto const* reply) {
        if (!reply)
            return;
        m_monitors.clear();
        for (auto i = xcb_randr_get_monitors_monitors_iterator(reply); i.rem > 0; xcb_randr_monitor_info_next(&i)) {
            auto const& monitor = *i.data;
            m_monitors.push_back({ { monitor.x, monitor.y, monitor.width, monitor.height }, monitor.primary != 0 });
        }
        readEdges(ScreenEdges::Windows::All);
        notify();
    });
}

void X11Screen::readRefreshRate()
{
    if (!m_connection.randr().isPresent)
        return;
    auto const cookie = xcb_randr_get_screen_resources_current(m_connection.wire(), m_connection.root());
    m_connection.ask<xcb_randr_get_screen_resources_current_reply_t>(cookie.sequence, [this](auto const* reply) {
        if (!reply)
            return;
        // The fastest mode in use would need one more question for each output; with one mode there is no doubt, and
        // with several the first is the preferred one of the first output.
        m_refreshRate = 0;
        auto const* modes = xcb_randr_get_screen_resources_current_modes(reply);
        if (reply->num_modes > 0 && modes[0].htotal > 0 && modes[0].vtotal > 0)
            m_refreshRate = static_cast<double>(modes[0].dot_clock) / (modes[0].htotal * modes[0].vtotal);
        notify();
    });
}

void X11Screen::readWorkAreas()
{
    m_connection.askProperty(m_connection.root(), m_connection.atom(AtomName::NET_WORKAREA), [this](auto const* reply) {
        m_workAreas = rectsOf(reply);
        // The names of the finer areas have the desktop's number in them, so they are asked for once it is known how
        // many desktops there are.
        auto const count = std::min(static_cast<std::uint32_t>(m_workAreas.size()), maximumDesktops);
        for (auto desktop = static_cast<std::uint32_t>(m_monitorWorkAreaAtoms.size()); desktop < count; ++desktop) {
            auto const name = "_GTK_WORKAREAS_D" + std::to_string(desktop);
            auto const cookie
                = xcb_intern_atom(m_connection.wire(), 0, static_cast<std::uint16_t>(name.size()), name.data());
            m_connection.ask<xcb_intern_atom_reply_t>(cookie.sequence, [this, desktop](auto const* atom) {
                if (!atom)
                    return;
                m_monitorWorkAreaAtoms[atom->atom] = desktop;
                readMonitorWorkArea(atom->atom, desktop);
            });
        }
        for (auto const& [atom, desktop] : m_monitorWorkAreaAtoms)
            readMonitorWorkArea(atom, desktop);
        readEdges(ScreenEdges::Windows::All);
    });
}

void X11Screen::readEdges(ScreenEdges::Windows which)
{
    bool const isToldMore = std::any_of(
        m_monitorWorkAreas.begin(), m_monitorWorkAreas.end(), [](auto const& areas) { return !areas.second.empty(); });
    if (m_monitors.size() > 1 && !isToldMore)
        m_edges.read(which);
}

void X11Screen::readMonitorWorkArea(xcb_atom_t property, std::uint32_t desktop)
{
    m_connection.askProperty(m_connection.root(), property,
        [this, desktop](auto const* reply) { m_monitorWorkAreas[desktop] = rectsOf(reply); });
}

void X11Screen::readResources()
{
    m_connection.askProperty(m_connection.root(), XCB_ATOM_RESOURCE_MANAGER, [this](auto const* reply) {
        m_resources = bytesOf(reply);
        updateScale();
    });
}

void X11Screen::readSettingsOwner()
{
    auto const cookie = xcb_get_selection_owner(m_connection.wire(), m_connection.atoms().settings());
    m_connection.ask<xcb_get_selection_owner_reply_t>(cookie.sequence,
        [this](auto const* reply) { followSettingsOwner(reply ? reply->owner : xcb_window_t { XCB_WINDOW_NONE }); });
}

void X11Screen::followSettingsOwner(xcb_window_t owner)
{
    m_settingsOwner = owner;
    if (owner == XCB_WINDOW_NONE) {
        m_settings = {};
        updateScale();
        return;
    }
    std::uint32_t const mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection.wire(), owner, XCB_CW_EVENT_MASK, &mask);
    readSettings();
}

void X11Screen::readSettings()
{
    m_connection.askProperty(
        m_settingsOwner, m_connection.atom(AtomName::XSETTINGS_SETTINGS), [this](auto const* reply) {
            m_settings = settingsIn(bytesOf(reply)).value_or(Settings {});
            updateScale();
        });
}

void X11Screen::updateScale()
{
    auto const factor = scaleFactor(m_settings, m_resources);
    if (factor == m_scale.factor)
        return;
    m_scale.factor = factor;
    notify();
}

void X11Screen::setRootHeight(std::int32_t height)
{
    if (height == m_scale.rootHeight)
        return;
    m_scale.rootHeight = height;
    notify();
}

X11Screen::Monitor X11Screen::mainMonitor(std::optional<PixelRect> const& keyWindow) const
{
    if (m_monitors.empty())
        return { { 0, 0, m_rootWidth, m_scale.rootHeight }, true };
    if (keyWindow) {
        auto const middle = std::find_if(m_monitors.begin(), m_monitors.end(),
            [&](auto const& monitor) { return monitor.rect.contains(keyWindow->middleX(), keyWindow->middleY()); });
        if (middle != m_monitors.end())
            return *middle;
        auto const overlap = [&](Monitor const& monitor) { return areaOf(intersectionOf(monitor.rect, *keyWindow)); };
        auto const best = std::max_element(m_monitors.begin(), m_monitors.end(),
            [&](auto const& first, auto const& second) { return overlap(first) < overlap(second); });
        if (overlap(*best) > 0)
            return *best;
    }
    auto const primary
        = std::find_if(m_monitors.begin(), m_monitors.end(), [](auto const& monitor) { return monitor.isPrimary; });
    return primary == m_monitors.end() ? m_monitors.front() : *primary;
}

PixelRect X11Screen::visiblePart(PixelRect const& monitor) const
{
    auto const desktop = m_desktop.currentDesktop();
    if (auto const finer = m_monitorWorkAreas.find(desktop); finer != m_monitorWorkAreas.end()) {
        for (auto const& area : finer->second) {
            auto const part = intersectionOf(monitor, area);
            if (!part.isEmpty())
                return part;
        }
    }
    if (m_monitors.size() > 1) {
        if (auto const part = m_edges.freePart(monitor, { 0, 0, m_rootWidth, m_scale.rootHeight }))
            return *part;
    }
    if (desktop >= m_workAreas.size())
        return monitor;
    auto const part = intersectionOf(monitor, m_workAreas[desktop]);
    return part.isEmpty() ? monitor : part;
}

NSScreen X11Screen::mainScreen(std::optional<PixelRect> const& keyWindow) const
{
    auto const monitor = mainMonitor(keyWindow);
    return { m_scale.toPoints(monitor.rect), m_scale.toPoints(visiblePart(monitor.rect)) };
}

void X11Screen::notify() const
{
    if (m_didChange)
        m_didChange();
}

} // namespace backends
