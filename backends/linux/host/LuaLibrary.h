#pragma once

#include "platform/foundation/Result.h"

#include <lua.hpp>

namespace backends {

// The functions of Lua that scripts run on, by their own names. They are called through this table because the library
// is loaded late. The header's macros do not work with it: what they stand for is called instead.
struct LuaLibrary {
    // The first time in a process it loads the library, later it only looks the names up. Any thread.
    static platform::Result<LuaLibrary> load();

#define PANEWELD_LUA_FUNCTIONS(function)                                                                               \
    function(lua_newstate);                                                                                            \
    function(lua_close);                                                                                               \
    function(lua_load);                                                                                                \
    function(lua_callk);                                                                                               \
    function(lua_pcallk);                                                                                              \
    function(lua_error);                                                                                               \
    function(lua_sethook);                                                                                             \
    function(lua_checkstack);                                                                                          \
    function(lua_settop);                                                                                              \
    function(lua_gettop);                                                                                              \
    function(lua_absindex);                                                                                            \
    function(lua_rotate);                                                                                              \
    function(lua_pushnil);                                                                                             \
    function(lua_pushboolean);                                                                                         \
    function(lua_pushinteger);                                                                                         \
    function(lua_pushnumber);                                                                                          \
    function(lua_pushlstring);                                                                                         \
    function(lua_pushvalue);                                                                                           \
    function(lua_pushcclosure);                                                                                        \
    function(lua_pushlightuserdata);                                                                                   \
    function(lua_touserdata);                                                                                          \
    function(lua_type);                                                                                                \
    function(lua_isinteger);                                                                                           \
    function(lua_toboolean);                                                                                           \
    function(lua_tointegerx);                                                                                          \
    function(lua_tonumberx);                                                                                           \
    function(lua_tolstring);                                                                                           \
    function(lua_createtable);                                                                                         \
    function(lua_getfield);                                                                                            \
    function(lua_setfield);                                                                                            \
    function(lua_next);                                                                                                \
    function(lua_rawlen);                                                                                              \
    function(lua_rawgeti);                                                                                             \
    function(lua_rawseti);                                                                                             \
    function(lua_rawgetp);                                                                                             \
    function(lua_rawsetp);                                                                                             \
    function(lua_setmetatable);                                                                                        \
    function(lua_setupvalue);                                                                                          \
    function(luaL_requiref);                                                                                           \
    function(luaopen_base);                                                                                            \
    function(luaopen_string);                                                                                          \
    function(luaopen_table);                                                                                           \
    function(luaopen_math);                                                                                            \
    function(luaopen_utf8)

#define PANEWELD_DECLARE(name) decltype(&::name) name = nullptr
    PANEWELD_LUA_FUNCTIONS(PANEWELD_DECLARE);
#undef PANEWELD_DECLARE
};

} // namespace backends
