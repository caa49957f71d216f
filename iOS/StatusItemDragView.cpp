#include "iOS/StatusItemDragView.h"

#include "iOS/OSLog+Paneweld.h"
#include "platform/appkit/NSDraggingInfo.h"
#include "platform/appkit/NSPasteboard.h"
#include "platform/foundation/Fatal.h"

#include <optional>

namespace paneweld {

using platform::URL;

namespace {

// One thing that is no URL spoils the whole drop: half of it would be worse than none.
std::optional<std::vector<URL>> readURLs(platform::NSPasteboard& pasteboard)
{
    auto const objects = pasteboard.readObjectsForClasses({ platform::PasteboardClass::URL });
    if (!objects)
        return std::nullopt;
    std::vector<URL> urls;
    for (auto const& object : *objects) {
        auto const* const url = object.asURL();
        if (!url)
            return std::nullopt;
        urls.push_back(*url);
    }
    return urls;
}

} // namespace

std::vector<std::string> StatusItemDragView::draggedTypes()
{
    return { platform::NSPasteboardTypeFileURL, platform::NSPasteboardTypeURL };
}

StatusItemDragView::StatusItemDragView(platform::Platform& platform, platform::Rect frame)
    : NSView(frame)
    , m_platform(platform)
{
    registerForDraggedTypes(draggedTypes());
}

void StatusItemDragView::initWithCoder() { platform::fatalError("init(coder:) has not been implemented"); }

// The callbacks are copied before they are called: one that ends the status item ends this view on the way.

void StatusItemDragView::mouseDown(platform::NSEvent const&)
{
    if (auto const call = onLeftClick)
        call();
}

void StatusItemDragView::rightMouseDown(platform::NSEvent const&)
{
    if (auto const call = onRightClick)
        call();
}

platform::NSDragOperation StatusItemDragView::draggingEntered(platform::NSDraggingInfo&)
{
    return platform::NSDragOperation::Copy;
}

bool StatusItemDragView::performDragOperation(platform::NSDraggingInfo& info)
{
    auto const urls = readURLs(info.draggingPasteboard());
    if (!urls) {
        OSLog::paneweld(m_platform).error("empty drag operation");
        return false;
    }
    // An empty list is a drop too: it could be read.
    if (auto const call = onDropped)
        call(*urls);
    return true;
}

} // namespace paneweld
