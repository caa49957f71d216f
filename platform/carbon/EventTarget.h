#pragma once

#include "platform/carbon/CarbonEvent.h"

#include <functional>
#include <memory>
#include <vector>

namespace platform {

// Where events are offered to handlers, the latest installed first, until one of them takes it. It bears handlers
// that come and go from inside a handler. Main thread only.
class EventTarget {
public:
    // Gives eventNotHandledErr to let the event travel on.
    using Handler = std::function<OSStatus(CarbonEvent const* event)>;

    // An installed handler. Dropping it takes the handler away. It must not outlive the target.
    class [[nodiscard]] HandlerRef {
    public:
        HandlerRef() = default;
        HandlerRef(HandlerRef&&) noexcept = default;
        HandlerRef& operator=(HandlerRef&&) noexcept = default;

        explicit operator bool() const { return m_installed != nullptr; }

    private:
        friend class EventTarget;
        std::shared_ptr<void> m_installed {};
    };

    // InstallEventHandler.
    HandlerRef installEventHandler(std::vector<EventTypeSpec> types, Handler handler);

    // The status of the handler that took it, eventNotHandledErr when nobody did.
    OSStatus sendEvent(CarbonEvent const& event);

private:
    struct Installed;

    std::vector<std::weak_ptr<Installed>> m_handlers;
};

} // namespace platform
