#include "backends/linux/host/ScriptEngine.h"
#include "platform/applescript/ScriptSeal.h"

#include <cstdint>
#include <string>

// Whatever lies where a script should lie is refused by its seal, before the engine sees any of it. Sealed as by the
// build, bytes that are no compiled code are refused by the engine.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    backends::ScriptEngine const engine({});
    auto const code = platform::unsealedScript(bytes);
    if (code && platform::sealedScript(code.value()) != bytes)
        __builtin_trap();
    auto const checkRefused = [&](std::string const& file) {
        platform::Dictionary errorInfo;
        if (engine.load(file, errorInfo) || !errorInfo.contains(platform::NSAppleScriptErrorMessage))
            __builtin_trap();
    };
    if (!code)
        checkRefused(bytes);
    // Code that a compiler could have made is trusted, and made up it is nothing that an engine could bear.
    constexpr char signature = '\x1b';
    if (!bytes.starts_with(signature))
        checkRefused(platform::sealedScript(bytes));
    return 0;
}
