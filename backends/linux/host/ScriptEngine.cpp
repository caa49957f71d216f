#include "backends/linux/host/ScriptEngine.h"

#include "backends/linux/host/FileSystem.h"
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
    auto script = std::make_shared<LuaScript>(lua.value(), m_functions, m_limits);
    return script->load(code.value(), errorInfo) ? script : nullptr;
}

} // namespace backends
