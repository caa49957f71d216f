#include "backends/linux/LinuxStatusBar.h"

#include <utility>

namespace backends {

using platform::StatusItemPlace;

namespace {

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

} // namespace

LinuxStatusBar::LinuxStatusBar(EventLoop& loop, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_log(std::move(log))
{
}

LinuxStatusBar::~LinuxStatusBar() = default;

// How wide it is, the panel knows.
std::shared_ptr<platform::NSStatusItem> LinuxStatusBar::statusItemWithLength(double)
{
    DBusStatusItem::Options options;
    options.busAddress = m_options.busAddress;
    options.identity = { m_options.id, m_options.title, ++m_count, {} };
    options.drawIcon = m_options.drawIcon;
    options.standInIconName = m_options.standInIconName;
    options.willActivate = m_options.willActivate;
    std::weak_ptr<bool> const life = m_life;
    options.stateDidChange = [this, life] {
        if (!life.expired())
            update();
    };
    options.didEnd = [this, life] {
        // Whoever lets go of it is not in the loop.
        if (!life.expired())
            m_update = m_loop.soon([this] { update(); });
    };
    auto item = std::make_shared<DBusStatusItem>(m_loop, std::move(options), m_log);
    m_items.push_back(item);
    return item;
}

void LinuxStatusBar::redraw()
{
    for (auto const& item : m_items) {
        if (auto const living = item.lock())
            living->redraw();
    }
}

void LinuxStatusBar::update()
{
    std::erase_if(m_items, [](auto const& item) { return item.expired(); });
    // All items have the same desktop; the last one is the last to hear of it.
    auto const last = m_items.empty() ? nullptr : m_items.back().lock();
    auto const place = last ? placeOf(last->state()) : StatusItemPlace::Nowhere;
    if (std::exchange(m_place, place) != place)
        reportPlaceChanged();
}

} // namespace backends
