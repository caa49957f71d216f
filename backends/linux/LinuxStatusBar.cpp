#include "backends/linux/LinuxStatusBar.h"

#include "backends/linux/x11/X11World.h"

#include <utility>

namespace backends {

using platform::StatusItemPlace;

LinuxStatusBar::LinuxStatusBar(EventLoop& loop, Options options, platform::OSLog log, std::unique_ptr<Bus> bus)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_log(std::move(log))
    , m_bus(std::move(bus))
    , m_hangUp(m_loop.soon([this] { m_bus.reset(); }))
{
    if (m_bus)
        m_bus->hurry();
    if (!m_options.x11)
        return;
    m_options.x11->tray().setObserver([this] {
        for (auto const& item : livingItems())
            item->trayDidChange();
    });
}

LinuxStatusBar::~LinuxStatusBar()
{
    if (m_options.x11)
        m_options.x11->tray().setObserver({});
}

// How wide it is, the tray or the panel knows.
std::shared_ptr<platform::NSStatusItem> LinuxStatusBar::statusItemWithLength(double)
{
    LinuxStatusItem::Options options;
    options.busAddress = m_options.busAddress;
    options.bus = std::move(m_bus);
    options.identity = { m_options.id, m_options.title, ++m_count, {} };
    options.renderings = m_options.renderings;
    options.standInIconName = m_options.standInIconName;
    options.userDidAct = m_options.userDidAct;
    options.x11 = m_options.x11;
    std::weak_ptr<bool> const life = m_life;
    options.willPress = [this, life](auto const& area) {
        if (!life.expired())
            setPressedFrame(area ? pointsOf(*area) : std::nullopt);
    };
    options.placeDidChange = [this, life] {
        if (!life.expired())
            update();
    };
    options.didEnd = [this, life] {
        // Whoever lets go of it is not in the loop.
        if (!life.expired())
            m_update = m_loop.soon([this] { update(); });
    };
    auto item = std::make_shared<LinuxStatusItem>(m_loop, std::move(options), m_log);
    m_items.push_back(item);
    return item;
}

void LinuxStatusBar::redraw()
{
    for (auto const& item : livingItems())
        item->redraw();
}

std::vector<std::shared_ptr<LinuxStatusItem>> LinuxStatusBar::livingItems() const
{
    std::vector<std::shared_ptr<LinuxStatusItem>> living;
    for (auto const& item : m_items) {
        if (auto held = item.lock())
            living.push_back(std::move(held));
    }
    return living;
}

std::optional<platform::Rect> LinuxStatusBar::pointsOf(PixelRect const& area) const
{
    // A panel that is no window of X counts in a way of its own.
    if (!m_options.x11 || !m_options.x11->isAlive() || m_options.x11->isInsideWayland())
        return std::nullopt;
    auto const& screen = m_options.x11->screen();
    // Not every panel tells the truth.
    if (!screen.monitorAt(area).contains(area.middleX(), area.middleY()))
        return std::nullopt;
    return screen.scale().toPoints(area);
}

void LinuxStatusBar::update()
{
    std::erase_if(m_items, [](auto const& item) { return item.expired(); });
    // All items have the same desktop; the last one is the last to hear of it.
    auto const last = m_items.empty() ? nullptr : m_items.back().lock();
    auto const place = last ? last->place() : StatusItemPlace::Nowhere;
    if (std::exchange(m_place, place) != place)
        reportPlaceChanged();
}

} // namespace backends
