#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/URL.h"

#include <memory>

namespace platform {

// A picture by the file that it is drawn from; how and when it is drawn is up to who shows it. Main thread only.
class NSImage {
public:
    // Null when the file cannot be read.
    static std::shared_ptr<NSImage> initWithContentsOfURL(URL const& url, FileManager const& files)
    {
        auto const path = url.filePath();
        if (!path || !files.isReadableFile(*path))
            return nullptr;
        return std::make_shared<NSImage>(url);
    }
    explicit NSImage(URL url)
        : m_url(std::move(url))
    {
    }

    URL const& url() const { return m_url; }
    // Only its shape counts, and who shows it gives it the colour of what is around it.
    bool isTemplate() const { return m_isTemplate; }
    void setTemplate(bool isTemplate) { m_isTemplate = isTemplate; }

private:
    URL m_url;
    bool m_isTemplate = false;
};

} // namespace platform
