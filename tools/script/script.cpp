#include "platform/applescript/ScriptSeal.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <lua.hpp>
#include <memory>
#include <string>

// Compiles a script for the bundle: script SOURCE FILE. Lines and names of the source are left out, as a compiler for
// shipping does; mistakes are told with their lines here.

namespace {

int append(lua_State*, void const* bytes, std::size_t size, void* code)
{
    static_cast<std::string*>(code)->append(static_cast<char const*>(bytes), size);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s SOURCE FILE\n", argv[0]);
        return 2;
    }
    std::ifstream source(argv[1], std::ios::binary);
    std::string const text { std::istreambuf_iterator<char>(source), {} };
    std::unique_ptr<lua_State, decltype(&lua_close)> const state(luaL_newstate(), lua_close);
    auto const name = "@" + std::string(argv[1]);
    if (!source.is_open() || luaL_loadbufferx(state.get(), text.data(), text.size(), name.c_str(), "t") != LUA_OK) {
        std::fprintf(stderr, "%s\n", source.is_open() ? lua_tostring(state.get(), -1) : "cannot read the source");
        return 1;
    }
    std::string code;
    constexpr int withoutNames = 1;
    lua_dump(state.get(), append, &code, withoutNames);
    std::ofstream file(argv[2], std::ios::binary);
    file << platform::sealedScript(code);
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
