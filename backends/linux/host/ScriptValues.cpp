#include "backends/linux/host/ScriptValues.h"

#include "backends/linux/host/LuaLibrary.h"

#include <limits>
#include <string>

namespace backends {

using platform::NSAppleEventDescriptor;

namespace {

// A list may hold itself.
constexpr int deepest = 16;
// A few places on the stack for each level.
constexpr int placesPerLevel = 4;

NSAppleEventDescriptor numberAt(LuaLibrary const& lua, lua_State* state, int place)
{
    if (!lua.lua_isinteger(state, place))
        return NSAppleEventDescriptor::descriptorWithDouble(lua.lua_tonumberx(state, place, nullptr));
    using Limits = std::numeric_limits<std::int32_t>;
    auto const number = lua.lua_tointegerx(state, place, nullptr);
    if (number < Limits::min() || number > Limits::max())
        return NSAppleEventDescriptor::descriptorWithString(std::to_string(number));
    return NSAppleEventDescriptor::descriptorWithInt32(static_cast<std::int32_t>(number));
}

NSAppleEventDescriptor readNested(LuaLibrary const& lua, lua_State* state, int place, int depth)
{
    switch (lua.lua_type(state, place)) {
    case LUA_TSTRING: {
        std::size_t length = 0;
        auto const* const bytes = lua.lua_tolstring(state, place, &length);
        return NSAppleEventDescriptor::descriptorWithString({ bytes, length });
    }
    case LUA_TNUMBER:
        return numberAt(lua, state, place);
    case LUA_TBOOLEAN:
        return NSAppleEventDescriptor::descriptorWithBoolean(lua.lua_toboolean(state, place) != 0);
    case LUA_TTABLE:
        break;
    default:
        return {};
    }
    if (depth == deepest || !lua.lua_checkstack(state, placesPerLevel))
        return {};
    auto list = NSAppleEventDescriptor::listDescriptor();
    auto const table = lua.lua_absindex(state, place);
    auto const length = lua.lua_rawlen(state, table);
    for (lua_Unsigned i = 1; i <= length; ++i) {
        lua.lua_rawgeti(state, table, static_cast<lua_Integer>(i));
        list.insertDescriptor(readNested(lua, state, -1, depth + 1), 0);
        lua.lua_settop(state, -2);
    }
    return list;
}

} // namespace

void pushDescriptor(LuaLibrary const& lua, lua_State* state, NSAppleEventDescriptor const& descriptor)
{
    if (!lua.lua_checkstack(state, placesPerLevel)) {
        // Deeper than any list that a program has made with a purpose; nothing can be pushed, not even a message.
        lua.lua_settop(state, 0);
        lua.lua_pushnil(state);
        lua.lua_error(state);
    }
    switch (descriptor.descriptorType()) {
    case platform::typeUnicodeText: {
        auto const* const text = descriptor.textValue();
        lua.lua_pushlstring(state, text->data(), text->size());
        return;
    }
    case platform::typeSInt32:
        lua.lua_pushinteger(state, descriptor.int32Value().value_or(0));
        return;
    case platform::typeIEEE64BitFloatingPoint:
        lua.lua_pushnumber(state, descriptor.doubleValue().value_or(0));
        return;
    case platform::typeBoolean:
        lua.lua_pushboolean(state, descriptor.booleanValue().value_or(false));
        return;
    case platform::typeAEList:
        lua.lua_createtable(state, 0, 0);
        for (std::size_t i = 1; i <= descriptor.numberOfItems(); ++i) {
            pushDescriptor(lua, state, *descriptor.descriptorAtIndex(i));
            lua.lua_rawseti(state, -2, static_cast<lua_Integer>(i));
        }
        return;
    default:
        lua.lua_pushnil(state);
    }
}

NSAppleEventDescriptor readDescriptor(LuaLibrary const& lua, lua_State* state, int place)
{
    return readNested(lua, state, place, 0);
}

} // namespace backends
