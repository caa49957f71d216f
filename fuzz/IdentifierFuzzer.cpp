#include "platform/foundation/JSON.h"

#include <cstdint>

// What is read from any bytes can be written, and reads back as the same.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const object = platform::JSONObject::scan({ reinterpret_cast<char const*>(data), size });
    auto const text = object ? object->string("id") : std::nullopt;
    if (!text)
        return 0;
    auto const again = platform::JSONObject::scan(platform::jsonObjectText({ { "id", *text } }));
    if (!again || again->string("id") != text)
        __builtin_trap();
    return 0;
}
