#include "platform/appkit/NSStatusBar.h"

namespace platform {

void NSStatusBar::reportPlaceChanged()
{
    // A copy: the handler may set another one.
    if (auto const handler = m_placeHandler)
        handler();
}

} // namespace platform
