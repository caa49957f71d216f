#pragma once

#include "platform/appkit/NSDraggingInfo.h"
#include "platform/appkit/NSPasteboard.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace backends {

// What another program handed over, as far as it has been read: all of it is here, and nobody waits for its owner.
class X11Pasteboard : public platform::NSPasteboard {
public:
    // Absent: nothing of it could be read.
    explicit X11Pasteboard(std::optional<std::vector<platform::URL>> urls)
        : m_urls(std::move(urls))
    {
    }

    std::optional<platform::List> readObjectsForClasses(std::vector<platform::PasteboardClass> const& classes) override
    {
        auto const isAsked = std::find(classes.begin(), classes.end(), platform::PasteboardClass::URL) != classes.end();
        if (!isAsked || !m_urls)
            return std::nullopt;
        return platform::List(m_urls->begin(), m_urls->end());
    }

private:
    std::optional<std::vector<platform::URL>> m_urls;
};

// A drag of it over a view of ours.
class X11DraggingInfo : public platform::NSDraggingInfo {
public:
    explicit X11DraggingInfo(std::optional<std::vector<platform::URL>> urls)
        : m_pasteboard(std::move(urls))
    {
    }

    platform::NSPasteboard& draggingPasteboard() override { return m_pasteboard; }

private:
    X11Pasteboard m_pasteboard;
};

} // namespace backends
