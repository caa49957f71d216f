#include "platform/carbon/EventHotKeys.h"

namespace platform {

void EventHotKeys::reportPressed(EventHotKeyID id)
{
    m_dispatcherTarget.sendEvent(CarbonEvent({ kEventClassKeyboard, kEventHotKeyPressed }, id));
}

void EventHotKeys::reportReleased(EventHotKeyID id)
{
    m_dispatcherTarget.sendEvent(CarbonEvent({ kEventClassKeyboard, kEventHotKeyReleased }, id));
}

void EventHotKeys::reportTruthChanged()
{
    // A copy: the handler may set another one.
    if (auto const handler = m_truthHandler)
        handler();
}

} // namespace platform
