#include "backends/linux/LinuxStatusItem.h"

#include "backends/linux/host/ProcessName.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "backends/linux/x11/X11World.h"
#include "platform/appkit/NSEvent.h"
#include "platform/appkit/NSImage.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace backends {

using platform::EventType;
using platform::NSEvent;
using platform::Seconds;
using platform::StatusItemPlace;

namespace {

// In points, where nobody tells.
constexpr double ordinarySide = 22;

// A tray that has gone is often there again a moment later: a panel that starts again. And one that is there and does
// not take the icon in this time is none for us.
constexpr Seconds returnTime { 0.5 };
constexpr Seconds dockTime { 3 };
constexpr int mostTimesPutOut = 3;

// Trays that make items of the session bus out of windows: the drop is lost on the way, and so is the right button.
bool isGoBetween(std::string const& program)
{
    static std::set<std::string> const goBetweens { "xembedsniproxy", "lxqt-panel" };
    return goBetweens.contains(program);
}

StatusItemPlace placeOf(StatusWatcher::State state)
{
    switch (state) {
    case StatusWatcher::State::NoWatcher:
        return StatusItemPlace::Nowhere;
    case StatusWatcher::State::WatcherWithoutHost:
        return StatusItemPlace::Waiting;
    case StatusWatcher::State::Shown:
        return StatusItemPlace::Panel;
    }
    return StatusItemPlace::Nowhere;
}

std::uint32_t blended(std::uint8_t const* pixel)
{
    auto const multiplied
        = [alpha = std::uint32_t { pixel[0] }](std::uint8_t channel) { return (channel * alpha + 127) / 255; };
    return std::uint32_t { pixel[0] } << 24 | multiplied(pixel[1]) << 16 | multiplied(pixel[2]) << 8
        | multiplied(pixel[3]);
}

} // namespace

// May outlive the item, and is a mere view then.
class LinuxStatusItem::Button : public platform::NSStatusBarButton {
public:
    explicit Button(LinuxStatusItem* item)
        : m_item(item)
    {
        setFrame({ 0, 0, ordinarySide, ordinarySide });
    }
    void leave() { m_item = nullptr; }

    // Where on the screen is up to the tray or the panel.
    void showMenu(std::shared_ptr<platform::NSMenu> const& menu, std::shared_ptr<platform::NSMenuItem> const&,
        platform::Point) override
    {
        if (m_item)
            m_item->showMenu(menu);
    }

private:
    void imageDidChange() override
    {
        if (m_item)
            m_item->redraw();
    }

    LinuxStatusItem* m_item;
};

LinuxStatusItem::LinuxStatusItem(EventLoop& loop, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_log(std::move(log))
    , m_button(std::make_shared<Button>(this))
{
    update();
    // An item in a tray has none.
    m_options.bus.reset();
}

LinuxStatusItem::~LinuxStatusItem()
{
    m_button->leave();
    leaveTray();
    if (m_options.didEnd)
        m_options.didEnd();
}

std::shared_ptr<platform::NSStatusBarButton> LinuxStatusItem::button() const { return m_button; }

StatusItemPlace LinuxStatusItem::place() const
{
    if (m_icon && m_icon->isDocked())
        return StatusItemPlace::Tray;
    return m_bus ? placeOf(m_bus->state()) : StatusItemPlace::Nowhere;
}

void LinuxStatusItem::trayDidChange()
{
    auto const& tray = m_options.x11->tray();
    if (m_icon && tray.owner() == m_tray && tray.look().visual == m_look.visual) {
        m_look = tray.look();
        m_icon->redraw();
        return;
    }
    bool const hadTray = m_icon && m_icon->isDocked();
    // A tray that goes in order puts its icons out first.
    bool const isWaiting = !m_icon && m_wait;
    leaveTray();
    if (tray.owner() != m_refusingTray) {
        m_refusingTray = XCB_WINDOW_NONE;
        m_timesPutOut = 0;
    }
    if (wantsTray())
        update();
    else if (hadTray)
        waitForTray();
    else if (!isWaiting)
        update();
    notify();
}

bool LinuxStatusItem::wantsTray() const
{
    if (!m_options.x11 || !m_options.x11->isAlive() || !m_options.x11->canDrawTrayIcons())
        return false;
    auto const& tray = m_options.x11->tray();
    if (tray.owner() == XCB_WINDOW_NONE || tray.owner() == m_refusingTray)
        return false;
    auto const process = tray.ownerProcess();
    return !process || !isGoBetween(processName(*process));
}

void LinuxStatusItem::update()
{
    m_wait.end();
    if (wantsTray()) {
        m_bus.reset();
        dock();
    } else if (!m_bus) {
        connectBus();
    }
}

void LinuxStatusItem::dock()
{
    auto& x11 = *m_options.x11;
    m_tray = x11.tray().owner();
    m_look = x11.tray().look();
    X11TrayIcon::Identity identity;
    identity.title = m_options.identity.title;
    identity.name = m_options.identity.id;
    identity.side = static_cast<int>(std::lround(ordinarySide * x11.screen().scale().factor));
    X11TrayIcon::Observer observer;
    observer.picture = [this](int side) { return trayPicture(side); };
    observer.didDock = [this] {
        m_wait.end();
        m_dockedSince = MonotonicClock().now();
        notify();
    };
    observer.didLeave = [this] { trayDidPutOut(); };
    observer.didPress = [this](auto const& press) { handlePress(press); };
    m_icon = x11.makeTrayIcon(identity, m_button, std::move(observer), m_log);
    m_wait = m_loop.after(dockTime, [this] { giveUpTray(); });
}

void LinuxStatusItem::leaveTray()
{
    // A menu stays no longer than what it belongs to.
    if (m_icon)
        m_options.x11->menu().close();
    m_icon.reset();
}

void LinuxStatusItem::giveUpTray()
{
    m_log.error("the tray does not take the status item");
    m_refusingTray = m_tray;
    leaveTray();
    update();
    notify();
}

void LinuxStatusItem::trayDidPutOut()
{
    leaveTray();
    if (MonotonicClock().now() - m_dockedSince >= m_options.longStay)
        m_timesPutOut = 0;
    // The tray itself may be there still, and take the icon in again.
    if (++m_timesPutOut >= mostTimesPutOut)
        m_refusingTray = m_tray;
    waitForTray();
    notify();
}

void LinuxStatusItem::waitForTray()
{
    m_wait = m_loop.after(returnTime, [this] {
        update();
        notify();
    });
}

void LinuxStatusItem::connectBus()
{
    DBusStatusItem::Options options;
    options.busAddress = m_options.busAddress;
    options.bus = std::move(m_options.bus);
    options.identity = m_options.identity;
    options.drawIcon = [this](auto const& image) { return panelPictures(image); };
    options.standInIconName = m_options.standInIconName;
    options.userDidAct = m_options.userDidAct;
    options.willPress = [willPress = m_options.willPress](auto const& place) {
        if (willPress)
            willPress(place ? std::optional(PixelRect { place->x, place->y, 0, 0 }) : std::nullopt);
    };
    options.stateDidChange = [this] { notify(); };
    m_bus = std::make_unique<DBusStatusItem>(m_loop, std::move(options), m_button, m_log);
}

void LinuxStatusItem::showMenu(std::shared_ptr<platform::NSMenu> const& menu)
{
    if (m_bus)
        m_bus->showMenu(menu);
    else if (m_icon)
        m_options.x11->menu().open(menu, m_press.area, m_press.time, {});
}

void LinuxStatusItem::handlePress(X11TrayIcon::Press const& press)
{
    m_press = press;
    if (m_options.willPress)
        m_options.willPress(press.area);
    // Held: a press may end the item.
    auto const button = m_button;
    if (press.button == X11TrayIcon::Press::Button::Left)
        button->reportMouseDown(NSEvent { EventType::LeftMouseDown });
    else
        button->reportRightMouseDown(NSEvent { EventType::RightMouseDown });
}

void LinuxStatusItem::redraw()
{
    if (m_bus)
        m_bus->redraw();
    if (m_icon)
        m_icon->redraw();
}

std::vector<IconPixmap> LinuxStatusItem::panelPictures(platform::NSImage const& image) const
{
    std::vector<IconPixmap> pictures;
    if (!m_options.renderings)
        return pictures;
    for (auto const& rendering : m_options.renderings(image)) {
        // Nobody tells what colour the panel has.
        auto const seen = image.isTemplate() ? withLightEdge(rendering) : rendering;
        pictures.push_back({ seen.size, seen.size, seen.pixels });
    }
    return pictures;
}

BlendedPicture LinuxStatusItem::trayPicture(int side) const
{
    auto const image = m_button->image();
    auto const renderings
        = image && m_options.renderings ? m_options.renderings(*image) : std::vector<IconRendering> {};
    if (renderings.empty())
        return {};
    // The largest one that fits; the smallest of all has to.
    auto const larger = std::find_if(
        renderings.begin(), renderings.end(), [side](auto const& rendering) { return rendering.size > side; });
    auto rendering = larger == renderings.begin() ? renderings.front() : *std::prev(larger);
    if (image->isTemplate())
        rendering = m_look.foreground ? tinted(rendering, *m_look.foreground) : withLightEdge(rendering);
    BlendedPicture picture { rendering.size, rendering.size, {} };
    for (std::size_t i = 0; i + 4 <= rendering.pixels.size(); i += 4)
        picture.pixels.push_back(blended(&rendering.pixels[i]));
    return picture;
}

void LinuxStatusItem::notify()
{
    // A copy: it may drop this.
    auto const placeDidChange = m_options.placeDidChange;
    if (placeDidChange)
        placeDidChange();
}

} // namespace backends
