#pragma once

#include "platform/appkit/NSEvent.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace platform {

// The opaque token of one local monitor. Dropping it removes nothing, as on the platform that this comes from; the
// monitor ends with removeMonitor.
class NSEventMonitor;

// Looks at key events of this process before its toolkit does. A backend overrides interestDidChange to get hold of
// just the keys that somebody asked for, and gives each one to deliver. Main thread only; monitors may be added and
// removed from inside a handler.
class NSEventMonitors {
public:
    // Gives the event on, or gives nothing: then nobody else sees it.
    using Handler = std::function<std::optional<NSEvent>(NSEvent const&)>;

    // Whether the handler decides about each key of interest anew, or never gives one on. Where it never does, a
    // window system need not keep the keyboard waiting for the decision.
    enum class Consumption { PerEvent, Always };

    virtual ~NSEventMonitors() = default;

    // addLocalMonitorForEventsMatchingMask:handler: with, beside it, the virtual key codes of interest, because on a
    // window system without a global view only the keys that are asked for can be watched. Null when the backend
    // cannot watch keys.
    [[nodiscard]] virtual std::shared_ptr<NSEventMonitor> addLocalMonitorForEventsMatchingMask(EventMask mask,
        std::set<std::uint16_t> keyCodesOfInterest, Handler handler, Consumption consumption = Consumption::PerEvent);
    void removeMonitor(std::shared_ptr<NSEventMonitor> const& monitor);

    // Runs the event through the monitors, the latest first, as long as it is given on. What comes out goes on to the
    // window; nothing means that it was consumed.
    std::optional<NSEvent> deliver(NSEvent const& event);

    // The union of all codes of interest, for the backend.
    std::set<std::uint16_t> keyCodesOfInterest() const;
    // Those of them that nobody else gets in any case.
    std::set<std::uint16_t> keyCodesAlwaysConsumed() const;

protected:
    virtual void interestDidChange() { }

private:
    std::vector<std::shared_ptr<NSEventMonitor>> m_monitors;
};

} // namespace platform
