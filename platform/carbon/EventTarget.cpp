#include "platform/carbon/EventTarget.h"

#include <algorithm>
#include <utility>

namespace platform {

struct EventTarget::Installed {
    std::vector<EventTypeSpec> types;
    Handler handle;
};

EventTarget::HandlerRef EventTarget::installEventHandler(std::vector<EventTypeSpec> types, Handler handler)
{
    auto const installed = std::make_shared<Installed>(Installed { std::move(types), std::move(handler) });
    m_handlers.push_back(installed);
    HandlerRef reference;
    reference.m_installed = installed;
    return reference;
}

OSStatus EventTarget::sendEvent(CarbonEvent const& event)
{
    std::erase_if(m_handlers, [](auto const& handler) { return handler.expired(); });
    auto const handlers = m_handlers;
    for (auto entry = handlers.rbegin(); entry != handlers.rend(); ++entry) {
        auto const installed = entry->lock();
        if (!installed
            || std::find(installed->types.begin(), installed->types.end(), event.type()) == installed->types.end())
            continue;
        if (auto const status = installed->handle(&event); status != eventNotHandledErr)
            return status;
    }
    return eventNotHandledErr;
}

} // namespace platform
