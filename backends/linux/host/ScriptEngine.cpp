#include "backends/linux/host/ScriptEngine.h"

#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/GuardedScript.h"
#include "backends/linux/host/LuaScript.h"
#include "platform/applescript/ScriptSeal.h"

namespace backends {

namespace {

std::shared_ptr<platform::NSAppleScript> refuse(platform::NSError const& error, platform::Dictionary& errorInfo)
{
    errorInfo = { { platform::NSAppleScriptErrorMessage, error.localizedDescription } };
    return nullptr;
}

} // namespace

std::shared_ptr<platform::NSAppleScript> ScriptEngine::initWithContentsOfURL(
    platform::URL const& url, platform::Dictionary& errorInfo)
{
    auto const file = readFile(url.filePath().value_or(""));
    return file ? load(file.value(), errorInfo) : refuse(file.error(), errorInfo);
}

std::shared_ptr<platform::NSAppleScript> ScriptEngine::load(
    std::string const& file, platform::Dictionary& errorInfo) const
{
    auto const code = platform::unsealedScript(file);
    if (!code)
        return refuse(code.error(), errorInfo);
    auto const lua = LuaLibrary::load();
    if (!lua)
        return refuse(lua.error(), errorInfo);
    // The code and the functions are kept: a script that hangs is replaced by a new one.
    auto open = [lua = lua.value(), code = std::string(code.value()), functions = m_functions, limits = m_limits](
                    platform::Dictionary& why) -> std::shared_ptr<platform::NSAppleScript> {
        auto const script = std::make_shared<LuaScript>(lua, functions, limits);
        return script->load(code, why) ? script : nullptr;
    };
    return GuardedScript::create(std::move(open), m_limits.time, errorInfo);
}

} // namespace backends
