#pragma once

#include "platform/appkit/NSView.h"
#include "platform/foundation/URL.h"

#include <functional>
#include <string>
#include <vector>

namespace platform {
class Platform;
}

namespace paneweld {

// An unseen view that lies over the whole button of the status item and takes its clicks, and what is dropped on it. It
// knows nothing of windows or of the host: who made it says what is to happen. Main thread only.
class StatusItemDragView : public platform::NSView {
public:
    // What it takes, in the order in which it is registered.
    static std::vector<std::string> draggedTypes();

    // initWithFrame:, in points of the view that it is added to.
    StatusItemDragView(platform::Platform& platform, platform::Rect frame);
    // initWithCoder:. Fatal: the view is never read from an archive.
    [[noreturn]] static void initWithCoder();

    // Each may be absent, and then what it is for is taken and comes to nothing. They may do anything, letting go of
    // this view included.
    std::function<void(std::vector<platform::URL> const&)> onDropped {};
    std::function<void()> onLeftClick {};
    std::function<void()> onRightClick {};

    void mouseDown(platform::NSEvent const& event) override;
    void rightMouseDown(platform::NSEvent const& event) override;
    // Copy, whatever is dragged and whatever keys are held: a drop is refused when it is read.
    platform::NSDragOperation draggingEntered(platform::NSDraggingInfo& info) override;
    bool performDragOperation(platform::NSDraggingInfo& info) override;

private:
    platform::Platform& m_platform;
};

} // namespace paneweld
