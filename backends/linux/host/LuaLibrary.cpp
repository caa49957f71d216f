#include "backends/linux/host/LuaLibrary.h"

#include "backends/linux/host/LateLibrary.h"

namespace backends {

using platform::NSError;

namespace {

constexpr char const* libraryName = "liblua5.4.so.0";

} // namespace

platform::Result<LuaLibrary> LuaLibrary::load()
{
    auto const library = LateLibrary::load(libraryName);
    if (!library.hasValue())
        return library.error();
    LuaLibrary table;
    char const* missing = nullptr;
#define PANEWELD_FIND(name)                                                                                            \
    if (!library.value().find(#name, table.name))                                                                      \
    missing = #name
    PANEWELD_LUA_FUNCTIONS(PANEWELD_FIND);
#undef PANEWELD_FIND
    if (missing)
        return NSError { "Loader", 2, std::string(libraryName) + " has no " + missing };
    return table;
}

} // namespace backends
