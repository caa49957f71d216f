#pragma once

#include "platform/foundation/Value.h"

#include <optional>
#include <vector>

namespace platform {

// Names of what a pasteboard can hold.
constexpr char const* NSPasteboardTypeFileURL = "public.file-url";
constexpr char const* NSPasteboardTypeURL = "public.url";

// The classes of objects that can be read from a pasteboard.
enum class PasteboardClass { URL };

// What is carried from one application to another, by a drag or a copy. Main thread only.
class NSPasteboard {
public:
    virtual ~NSPasteboard() = default;
    // readObjectsForClasses:options: without options: what it holds of these classes, in its own order. Absent when
    // nothing of it could be read, which is not the same as an empty list.
    virtual std::optional<List> readObjectsForClasses(std::vector<PasteboardClass> const& classes) = 0;
};

} // namespace platform
