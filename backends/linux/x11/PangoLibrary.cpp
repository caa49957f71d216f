#include "backends/linux/x11/PangoLibrary.h"

#include "backends/linux/host/LateLibrary.h"

namespace backends {

using platform::NSError;

namespace {

// It needs pango, cairo and the object system, and the loader looks for their functions through it.
constexpr char const* libraryName = "libpangocairo-1.0.so.0";

} // namespace

platform::Result<PangoLibrary> PangoLibrary::load()
{
    auto const library = LateLibrary::load(libraryName);
    if (!library.hasValue())
        return library.error();
    PangoLibrary table;
    char const* missing = nullptr;
#define PANEWELD_FIND(name)                                                                                            \
    if (!library.value().find(#name, table.name))                                                                      \
    missing = #name
    PANEWELD_PANGO_FUNCTIONS(PANEWELD_FIND);
#undef PANEWELD_FIND
    if (missing)
        return NSError { "Loader", 2, std::string(libraryName) + " has no " + missing };
    return table;
}

} // namespace backends
