#include "backends/linux/host/LuaScript.h"

#include "backends/linux/host/ScriptValues.h"
#include "backends/shared/ScriptErrors.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::NSAppleEventDescriptor;

namespace {

// So often that a script ends some microseconds after its time, so rarely that it costs nothing.
constexpr int instructionsBetweenLooks = 10'000;

// The key of the table that a script's global variables are in.
constexpr char globalsKey = 0;

// What leads out of the sandbox or writes into the host's terminal; and finalizers, which run where no hook ends them.
constexpr char const* withheld[]
    = { "_G", "collectgarbage", "dofile", "getmetatable", "load", "loadfile", "print", "setmetatable", "warn" };

char lowerCase(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool isSameName(char const* name, std::size_t length, std::string const& wanted)
{
    if (length != wanted.size())
        return false;
    for (std::size_t i = 0; i < length; ++i) {
        if (lowerCase(name[i]) != lowerCase(wanted[i]))
            return false;
    }
    return true;
}

struct Piece {
    std::string_view bytes;
};

char const* readPiece(lua_State*, void* context, std::size_t* size)
{
    auto& piece = *static_cast<Piece*>(context);
    auto const bytes = std::exchange(piece.bytes, {});
    *size = bytes.size();
    return bytes.data();
}

} // namespace

LuaScript::LuaScript(LuaLibrary const& lua, Functions functions, ScriptEngine::Limits limits)
    : m_lua(lua)
    , m_functions(std::move(functions))
    , m_limits(limits)
    , m_state(lua.lua_newstate(allocate, this))
{
    if (m_state)
        *static_cast<LuaScript**>(lua_getextraspace(m_state)) = this;
}

LuaScript::~LuaScript()
{
    if (m_state)
        m_lua.lua_close(m_state);
}

LuaScript& LuaScript::of(lua_State* state) { return **static_cast<LuaScript**>(lua_getextraspace(state)); }

void* LuaScript::allocate(void* context, void* block, std::size_t oldSize, std::size_t newSize) noexcept
{
    auto& self = *static_cast<LuaScript*>(context);
    // Of a new block the old size is a hint at its kind.
    auto const before = block ? oldSize : 0;
    if (newSize == 0) {
        std::free(block);
        self.m_usedBytes -= before;
        return nullptr;
    }
    auto const others = self.m_usedBytes - before;
    if (newSize > before && (newSize > self.m_limits.bytes || others > self.m_limits.bytes - newSize))
        return nullptr;
    auto* const moved = std::realloc(block, newSize);
    if (moved)
        self.m_usedBytes = others + newSize;
    return moved;
}

void LuaScript::checkTime(lua_State* state, lua_Debug*)
{
    auto& self = of(state);
    if (!self.isOutOfTime())
        return;
    self.m_isOutOfTime = true;
    // From here on at every instruction, so that a script which catches errors gets no further either.
    self.m_lua.lua_sethook(state, checkTime, LUA_MASKCOUNT, 1);
    self.m_lua.lua_pushnil(state);
    self.m_lua.lua_error(state);
}

int LuaScript::makeSandbox(lua_State* state)
{
    auto& self = of(state);
    auto const& lua = self.m_lua;
    lua.luaL_requiref(state, "_G", lua.luaopen_base, 1);
    lua.luaL_requiref(state, "table", lua.luaopen_table, 1);
    lua.luaL_requiref(state, "math", lua.luaopen_math, 1);
    lua.luaL_requiref(state, "utf8", lua.luaopen_utf8, 1);
    lua.luaL_requiref(state, "string", lua.luaopen_string, 1);
    lua.lua_pushnil(state);
    lua.lua_setfield(state, -2, "dump");

    lua.lua_rawgeti(state, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    for (auto const* name : withheld) {
        lua.lua_pushnil(state);
        lua.lua_setfield(state, -2, name);
    }
    for (std::size_t i = 0; i < self.m_functions->size(); ++i) {
        lua.lua_pushinteger(state, static_cast<lua_Integer>(i));
        lua.lua_pushcclosure(state, callFunction, 1);
        lua.lua_setfield(state, -2, (*self.m_functions)[i].name.c_str());
    }
    // The script's own globals stand before what it is given: only its own can be called as handlers.
    lua.lua_createtable(state, 0, 0);
    lua.lua_createtable(state, 0, 1);
    lua.lua_rotate(state, -3, -1);
    lua.lua_setfield(state, -2, "__index");
    lua.lua_setmetatable(state, -2);
    lua.lua_rawsetp(state, LUA_REGISTRYINDEX, &globalsKey);
    return 0;
}

bool LuaScript::load(std::string_view code, Dictionary& errorInfo)
{
    std::lock_guard const lock(m_mutex);
    if (!m_state) {
        describeError(LUA_ERRMEM, errorInfo);
        return false;
    }
    if (!run(makeSandbox, errorInfo))
        return false;
    pop(1);
    Piece piece { code };
    // Protected by itself. Compiled code only.
    int const status = m_lua.lua_load(m_state, readPiece, &piece, "=script", "b");
    if (status != LUA_OK) {
        describeError(status, errorInfo);
        pop(1);
        return false;
    }
    m_lua.lua_rawgetp(m_state, LUA_REGISTRYINDEX, &globalsKey);
    // The first thing that a script knows of the world are its globals.
    if (!m_lua.lua_setupvalue(m_state, -2, 1))
        pop(1);
    bool const isDone = runProtected(0, errorInfo);
    pop(1);
    return isDone;
}

std::optional<NSAppleEventDescriptor> LuaScript::executeAppleEvent(
    NSAppleEventDescriptor const& event, Dictionary& errorInfo)
{
    std::lock_guard const lock(m_mutex);
    if (!platform::isSubroutineCall(event)) {
        errorInfo = noHandlerCalled();
        return std::nullopt;
    }
    auto const* const name = event.descriptorForKeyword(platform::keyASSubroutineName);
    auto const* const arguments = event.descriptorForKeyword(platform::keyDirectObject);
    m_handler = name ? name->stringValue().value_or("") : "";
    m_arguments = arguments ? *arguments : NSAppleEventDescriptor();
    m_isHandlerFound = false;
    std::optional<NSAppleEventDescriptor> reply;
    bool const hasRun = run(callHandler, errorInfo);
    if (hasRun && m_isHandlerFound)
        reply = readDescriptor(m_lua, m_state, -1);
    pop(1);
    m_arguments = {};
    if (hasRun && !m_isHandlerFound)
        errorInfo = noSuchHandler(m_handler);
    return reply;
}

bool LuaScript::pushHandler()
{
    m_lua.lua_rawgetp(m_state, LUA_REGISTRYINDEX, &globalsKey);
    m_lua.lua_pushnil(m_state);
    while (m_lua.lua_next(m_state, -2)) {
        std::size_t length = 0;
        bool const hasText = m_lua.lua_type(m_state, -2) == LUA_TSTRING;
        auto const* const name = hasText ? m_lua.lua_tolstring(m_state, -2, &length) : nullptr;
        if (name && m_lua.lua_type(m_state, -1) == LUA_TFUNCTION && isSameName(name, length, m_handler))
            return true;
        pop(1);
    }
    return false;
}

int LuaScript::callHandler(lua_State* state)
{
    auto& self = of(state);
    auto const& lua = self.m_lua;
    self.m_isHandlerFound = self.pushHandler();
    if (!self.m_isHandlerFound)
        return 0;
    auto const count = self.m_arguments.numberOfItems();
    for (std::size_t i = 1; i <= count; ++i)
        pushDescriptor(lua, state, *self.m_arguments.descriptorAtIndex(i));
    lua.lua_callk(state, static_cast<int>(count), 1, 0, nullptr);
    return 1;
}

int LuaScript::callFunction(lua_State* state)
{
    auto& self = of(state);
    auto const& lua = self.m_lua;
    // A call that was left behind must do nothing any more.
    checkTime(state, nullptr);
    // An upvalue of ours.
    auto const index = lua.lua_tointegerx(state, lua_upvalueindex(1), nullptr);
    self.runFunction(static_cast<std::size_t>(index));
    if (self.m_outcome) {
        pushDescriptor(lua, state, self.m_outcome.value());
        return 1;
    }
    auto const& error = self.m_outcome.error();
    lua.lua_createtable(state, 0, 2);
    lua.lua_pushinteger(state, error.code);
    lua.lua_setfield(state, -2, "number");
    lua.lua_pushlstring(state, error.localizedDescription.data(), error.localizedDescription.size());
    lua.lua_setfield(state, -2, "message");
    return lua.lua_error(state);
}

// Apart from the above, where an error may be raised: here are things to destroy.
void LuaScript::runFunction(std::size_t index)
{
    ScriptFunction::Arguments arguments;
    for (int place = 1; place <= m_lua.lua_gettop(m_state); ++place)
        arguments.push_back(readDescriptor(m_lua, m_state, place));
    m_outcome = (*m_functions)[index].call(arguments, m_deadline);
}

bool LuaScript::run(lua_CFunction function, Dictionary& errorInfo)
{
    // Without an upvalue it is no object, so nothing is raised here.
    m_lua.lua_pushcclosure(m_state, function, 0);
    return runProtected(0, errorInfo);
}

bool LuaScript::runProtected(int arguments, Dictionary& errorInfo)
{
    m_isOutOfTime = false;
    m_deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(m_limits.time);
    m_lua.lua_sethook(m_state, checkTime, LUA_MASKCOUNT, instructionsBetweenLooks);
    int const status = m_lua.lua_pcallk(m_state, arguments, 1, 0, 0, nullptr);
    m_lua.lua_sethook(m_state, nullptr, 0, 0);
    if (status == LUA_OK && !m_isOutOfTime)
        return true;
    describeError(status, errorInfo);
    return false;
}

void LuaScript::describeError(int status, Dictionary& errorInfo) const
{
    if (m_isOutOfTime) {
        errorInfo = handlerOutOfTime();
        return;
    }
    if (status == LUA_ERRMEM) {
        errorInfo = scriptError("the script needs too much memory", platform::errOSASystemError);
        return;
    }
    errorInfo.clear();
    if (m_lua.lua_type(m_state, -1) != LUA_TTABLE) {
        if (auto const message = readDescriptor(m_lua, m_state, -1).stringValue())
            errorInfo[platform::NSAppleScriptErrorMessage] = *message;
        return;
    }
    // Walked through, because looking a name up would need memory, which may be what there is not.
    m_lua.lua_pushnil(m_state);
    while (m_lua.lua_next(m_state, -2)) {
        auto const key = readDescriptor(m_lua, m_state, -2);
        auto const value = readDescriptor(m_lua, m_state, -1);
        if (key.textValue() && *key.textValue() == "message" && value.stringValue())
            errorInfo[platform::NSAppleScriptErrorMessage] = *value.stringValue();
        if (key.textValue() && *key.textValue() == "number" && value.int32Value())
            errorInfo[platform::NSAppleScriptErrorNumber] = *value.int32Value();
        pop(1);
    }
}

} // namespace backends
