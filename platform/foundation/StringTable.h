#pragma once

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <string_view>

namespace platform {

// What can be wrong with a property list; the `code` of an NSError in the domain "StringTable".
enum class StringTableError : std::int64_t {
    Empty = 1,
    Encoding = 2,
    XML = 3,
    Binary = 4,
    Syntax = 5,
    TooDeep = 6,
};

// Old-style property lists, the form in which a bundle's texts and its description are written. The encoding is told by
// a byte order mark, else it is UTF-8. Values are texts, lists, dictionaries or data, nested at most 512 deep. XML and
// binary property lists are recognised and refused. Errors name the line. Any thread.

// The inside of a .strings file: `"key" = "value";` again and again, with or without braces around. A key alone is its
// own value; of equal keys the last counts. One mistake loses the whole table.
Result<Dictionary> parseStringTable(std::string_view bytes);

// The same with the braces, and nothing after them: a bundle's Info.
Result<Dictionary> parsePropertyList(std::string_view bytes);

} // namespace platform
