#pragma once

#include "platform/applescript/AppleEvents.h"
#include "platform/applescript/NSAppleScript.h"

#include <cstdint>
#include <string>
#include <utility>

namespace backends {

// What a script engine of ours says of a failure that is not the script's own: the same in every world.
inline platform::Dictionary scriptError(std::string message, std::int32_t number)
{
    return { { platform::NSAppleScriptErrorMessage, std::move(message) },
        { platform::NSAppleScriptErrorNumber, number } };
}

inline platform::Dictionary noHandlerCalled()
{
    return scriptError("the event calls no handler", platform::errAEEventNotHandled);
}

inline platform::Dictionary noSuchHandler(std::string const& name)
{
    return scriptError("the script has no handler " + name, platform::errAEEventNotHandled);
}

inline platform::Dictionary handlerOutOfTime()
{
    return scriptError("the handler did not end in time", platform::errAETimeout);
}

} // namespace backends
