#pragma once

#include "platform/applescript/NSAppleEventDescriptor.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/URL.h"

#include <memory>
#include <optional>

namespace platform {

// What is known of a script's error: either key may be missing. The message is text, the number an integer.
constexpr char const* NSAppleScriptErrorMessage = "NSAppleScriptErrorMessage";
constexpr char const* NSAppleScriptErrorNumber = "NSAppleScriptErrorNumber";

// Whether the event asks a script for one of its handlers.
inline bool isSubroutineCall(NSAppleEventDescriptor const& event)
{
    return event.eventClass() == kASAppleScriptSuite && event.eventID() == kASSubroutineEvent;
}

// A compiled script with handlers that can be called. Any thread, but one at a time.
class NSAppleScript {
public:
    virtual ~NSAppleScript() = default;

    // Runs the handler that the event names (keyASSubroutineName) with the items of its direct object, and returns what
    // the handler returned. Blocks for as long as the handler takes, up to the world's limit (errAETimeout). Absent
    // when it failed, or the event asks for something else: the error information then says why.
    virtual std::optional<NSAppleEventDescriptor> executeAppleEvent(
        NSAppleEventDescriptor const& event, Dictionary& errorInfo)
        = 0;
};

// Who loads scripts. Any thread.
class NSAppleScripts {
public:
    virtual ~NSAppleScripts() = default;

    // Null when the file is no script that can be run here: the error information then says why.
    virtual std::shared_ptr<NSAppleScript> initWithContentsOfURL(URL const& url, Dictionary& errorInfo) = 0;
};

} // namespace platform
