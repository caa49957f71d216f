#pragma once

#include "backends/linux/x11/X11DropTarget.h"
#include "platform/appkit/NSDraggingInfo.h"
#include "platform/appkit/NSPasteboard.h"
#include "platform/appkit/NSView.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/DragSource.h"
#include "tests/support/CollectedLog.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// A window of ours with a view that writes down what is dragged onto it, and another program beside it that drags.
class DropTest : public ::testing::Test {
protected:
    using Texts = std::vector<std::string>;

    struct View : platform::NSView {
        platform::NSDragOperation draggingEntered(platform::NSDraggingInfo& info) override;
        bool performDragOperation(platform::NSDraggingInfo& info) override;

        platform::NSDragOperation answer = platform::NSDragOperation::Copy;
        bool isAccepting = true;
        std::function<void()> onEntered;
        std::function<void()> onPerform;
        int entered = 0;
        int performed = 0;
        // What the last drop could be read as; absent as long as nothing was read.
        std::optional<Texts> dropped;
    };

    void start();
    void makeTarget(platform::Seconds patience = platform::Seconds { 5 });
    // Runs both sides until the condition holds; false when it does not come in time.
    bool pumpUntil(std::function<bool()> condition);
    // Until everything that is on its way between the two has come.
    void settle();
    // Enters and is over the window, as far as the answer to that.
    void drag(std::uint32_t version = 5);
    // All of it, until the source is told what became of it.
    void dragAndDrop(std::uint32_t version = 5);
    xcb_atom_t copyAction() { return source->atom("XdndActionCopy"); }

    CollectedLog lines { platform::LogLevel::Error };
    platform::OSLog log { lines, "test", "drop" };
    std::unique_ptr<Desktop> desktop;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<backends::Connection> connection;
    std::unique_ptr<DragSource> source;
    std::shared_ptr<View> view = std::make_shared<View>();
    xcb_window_t window = XCB_WINDOW_NONE;
    std::unique_ptr<backends::X11DropTarget> target;
};

} // namespace paneweld_tests
