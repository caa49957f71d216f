#pragma once

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSView.h"

#include <memory>

namespace platform {

// What one sees and clicks of a status item. A backend derives from it, shows the image and opens the menus.
class NSStatusBarButton : public NSView {
public:
    // Null for none.
    std::shared_ptr<NSImage> const& image() const { return m_image; }
    void setImage(std::shared_ptr<NSImage> image)
    {
        m_image = std::move(image);
        imageDidChange();
    }

protected:
    virtual void imageDidChange() { }

private:
    std::shared_ptr<NSImage> m_image;
};

} // namespace platform
