#pragma once

#include "backends/linux/host/LuaLibrary.h"
#include "backends/linux/host/ScriptEngine.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace backends {

// One script in a Lua of its own. Its global variables live from call to call.
//
// Lua's errors jump over our frames without running a destructor. So everything that may raise one is done in functions
// that Lua calls protected and that hold nothing to destroy, and what they need or yield lies in members.
class LuaScript : public platform::NSAppleScript {
public:
    using Functions = std::shared_ptr<std::vector<ScriptFunction> const>;

    LuaScript(LuaLibrary const& lua, Functions functions, ScriptEngine::Limits limits);
    ~LuaScript() override;
    LuaScript(LuaScript const&) = delete;
    LuaScript& operator=(LuaScript const&) = delete;

    // Once, first. The code is trusted: it is what a seal held. False with the reason.
    bool load(std::string_view code, platform::Dictionary& errorInfo);

    std::optional<platform::NSAppleEventDescriptor> executeAppleEvent(
        platform::NSAppleEventDescriptor const& event, platform::Dictionary& errorInfo) override;

private:
    using Clock = std::chrono::steady_clock;

    // What Lua calls.
    static void* allocate(void* context, void* block, std::size_t oldSize, std::size_t newSize) noexcept;
    static void checkTime(lua_State* state, lua_Debug*);
    static int makeSandbox(lua_State* state);
    static int callHandler(lua_State* state);
    static int callFunction(lua_State* state);

    static LuaScript& of(lua_State* state);

    bool pushHandler();
    // Runs a function of ours protected, within the limits. Its result is left on the stack.
    bool run(lua_CFunction function, platform::Dictionary& errorInfo);
    bool runProtected(int arguments, platform::Dictionary& errorInfo);
    void describeError(int status, platform::Dictionary& errorInfo) const;
    void runFunction(std::size_t index);
    bool isOutOfTime() const { return Clock::now() >= m_deadline; }
    void pop(int count) const { m_lua.lua_settop(m_state, -count - 1); }

    LuaLibrary const m_lua;
    Functions const m_functions;
    ScriptEngine::Limits const m_limits;
    std::mutex m_mutex;
    // Before the state, which takes of it while it is made.
    std::size_t m_usedBytes = 0;
    lua_State* m_state = nullptr;
    Clock::time_point m_deadline {};
    bool m_isOutOfTime = false;

    // Of the call under way.
    std::string m_handler;
    platform::NSAppleEventDescriptor m_arguments;
    bool m_isHandlerFound = false;
    // Of the function of ours that the script called last.
    platform::Result<platform::NSAppleEventDescriptor> m_outcome = platform::NSAppleEventDescriptor();
};

} // namespace backends
