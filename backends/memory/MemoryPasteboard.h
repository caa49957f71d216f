#pragma once

#include "platform/appkit/NSDraggingInfo.h"
#include "platform/appkit/NSPasteboard.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace backends {

// What somebody drags in a memory world, as it would be read: whatever a test puts into it, sense or not.
class MemoryPasteboard : public platform::NSPasteboard {
public:
    // Absent: nothing of it can be read.
    explicit MemoryPasteboard(std::optional<platform::List> contents)
        : m_contents(std::move(contents))
    {
    }

    std::optional<platform::List> readObjectsForClasses(std::vector<platform::PasteboardClass> const& classes) override
    {
        auto const isAsked = std::find(classes.begin(), classes.end(), platform::PasteboardClass::URL) != classes.end();
        return isAsked ? m_contents : std::nullopt;
    }

private:
    std::optional<platform::List> m_contents;
};

// A drag of it over a view.
class MemoryDrag : public platform::NSDraggingInfo {
public:
    explicit MemoryDrag(platform::NSPasteboard& pasteboard)
        : m_pasteboard(pasteboard)
    {
    }

    platform::NSPasteboard& draggingPasteboard() override { return m_pasteboard; }

private:
    platform::NSPasteboard& m_pasteboard;
};

} // namespace backends
