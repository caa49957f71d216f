#include "platform/appkit/NSEventMonitors.h"

#include <algorithm>

namespace platform {

class NSEventMonitor {
public:
    EventMask mask;
    std::set<std::uint16_t> keyCodes;
    NSEventMonitors::Handler handler;
    NSEventMonitors::Consumption consumption = NSEventMonitors::Consumption::PerEvent;
    bool isRemoved = false;

    bool wants(NSEvent const& event) const
    {
        auto const bit = std::uint64_t { 1 } << static_cast<unsigned>(event.type);
        return !isRemoved && (static_cast<std::uint64_t>(mask) & bit) != 0;
    }
};

std::shared_ptr<NSEventMonitor> NSEventMonitors::addLocalMonitorForEventsMatchingMask(
    EventMask mask, std::set<std::uint16_t> keyCodesOfInterest, Handler handler, Consumption consumption)
{
    auto monitor = std::make_shared<NSEventMonitor>();
    monitor->mask = mask;
    monitor->keyCodes = std::move(keyCodesOfInterest);
    monitor->handler = std::move(handler);
    monitor->consumption = consumption;
    m_monitors.push_back(monitor);
    interestDidChange();
    return monitor;
}

void NSEventMonitors::removeMonitor(std::shared_ptr<NSEventMonitor> const& monitor)
{
    if (!monitor || std::erase(m_monitors, monitor) == 0)
        return;
    monitor->isRemoved = true;
    interestDidChange();
}

std::optional<NSEvent> NSEventMonitors::deliver(NSEvent const& event)
{
    std::optional<NSEvent> current = event;
    auto const snapshot = m_monitors;
    for (auto monitor = snapshot.rbegin(); monitor != snapshot.rend() && current; ++monitor) {
        if ((*monitor)->wants(*current))
            current = (*monitor)->handler(*current);
    }
    return current;
}

std::set<std::uint16_t> NSEventMonitors::keyCodesOfInterest() const
{
    std::set<std::uint16_t> codes;
    for (auto const& monitor : m_monitors)
        codes.insert(monitor->keyCodes.begin(), monitor->keyCodes.end());
    return codes;
}

std::set<std::uint16_t> NSEventMonitors::keyCodesAlwaysConsumed() const
{
    std::set<std::uint16_t> codes;
    for (auto const& monitor : m_monitors) {
        if (monitor->consumption == Consumption::Always)
            codes.insert(monitor->keyCodes.begin(), monitor->keyCodes.end());
    }
    return codes;
}

} // namespace platform
