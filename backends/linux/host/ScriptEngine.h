#pragma once

#include "platform/applescript/NSAppleScript.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/Result.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace backends {

// A function of ours that scripts may call beside those of their language, on the thread that runs the script. What it
// returns reaches the script; an error is raised there with its code as number and its description as message. It
// returns by the deadline, when the script's time is over.
struct ScriptFunction {
    using Arguments = std::vector<platform::NSAppleEventDescriptor>;
    using Call = std::function<platform::Result<platform::NSAppleEventDescriptor>(
        Arguments const&, std::chrono::steady_clock::time_point deadline)>;

    std::string name;
    Call call;
};

// The script language of this system: Lua 5.4, compiled and sealed (platform/applescript/ScriptSeal.h). A script
// defines its handlers as global functions. It has texts, tables, numbers and our functions, and neither files nor
// processes nor a way to load code. Names of handlers match without regard to case.
//
// A handler gets texts, 32-bit integers, numbers, booleans and lists, and returns one of them. error() with a text, or
// with a table of `message` and `number`, is what the caller hears.
class ScriptEngine : public platform::NSAppleScripts {
public:
    struct Limits {
        // A handler that takes longer is ended, or left behind when it cannot be (errAETimeout). What a script does
        // while it is loaded counts the same.
        platform::Seconds time { 120 };
        std::size_t bytes = 256 * 1024 * 1024;
    };

    ScriptEngine(std::vector<ScriptFunction> functions, Limits limits)
        : m_functions(std::make_shared<std::vector<ScriptFunction> const>(std::move(functions)))
        , m_limits(limits)
    {
    }
    explicit ScriptEngine(std::vector<ScriptFunction> functions)
        : ScriptEngine(std::move(functions), Limits {})
    {
    }

    // The library is loaded with the first script. The scripts may outlive the engine, and hold its functions.
    std::shared_ptr<platform::NSAppleScript> initWithContentsOfURL(
        platform::URL const& url, platform::Dictionary& errorInfo) override;
    // The same for the bytes of a file.
    std::shared_ptr<platform::NSAppleScript> load(std::string const& file, platform::Dictionary& errorInfo) const;

private:
    std::shared_ptr<std::vector<ScriptFunction> const> m_functions;
    Limits m_limits;
};

} // namespace backends
