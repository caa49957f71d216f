#include "platform/foundation/StringTable.h"

#include <cstdint>

// Any bytes are a table or an error with a line, and what is an Info is a table as well.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string_view const bytes(reinterpret_cast<char const*>(data), size);
    auto const table = platform::parseStringTable(bytes);
    auto const info = platform::parsePropertyList(bytes);
    if (!table && !table.error().localizedDescription.starts_with("Line "))
        __builtin_trap();
    if (info && (!table || platform::Value(info.value()) != platform::Value(table.value())))
        __builtin_trap();
    return 0;
}
