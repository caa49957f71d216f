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

} // namespace platform
