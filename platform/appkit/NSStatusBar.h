#pragma once

#include "platform/appkit/NSStatusItem.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <optional>

namespace platform {

// As wide as what it shows.
constexpr double NSVariableStatusItemLength = -1;

// Where the status item can be seen now.
enum class StatusItemPlace {
    Nowhere, // the desktop has no place for it
    Waiting, // it is registered, and nobody shows such items yet
    Panel, // a panel shows it and draws its menu
    Tray, // it is a window of ours in a tray, which takes drops too
};

// The desktop's place for small pictures of running apps. Main thread only.
class NSStatusBar {
public:
    virtual ~NSStatusBar() = default;

    // Never null. It is shown for as long as it lives, wherever the desktop shows such items at the time.
    virtual std::shared_ptr<NSStatusItem> statusItemWithLength(double length) = 0;

    // The truth about it, for the host: nothing should be hidden that only the item could bring back.
    virtual StatusItemPlace place() const = 0;
    // Where on the screen an item was when it was pressed last, for a window that is to open beside it. In points; a
    // point alone where the desktop tells no more. Absent before the first press, and when the desktop does not tell.
    std::optional<Rect> const& pressedFrame() const { return m_pressedFrame; }
    // Called from the loop when the place is another one. An empty one takes it away.
    void setPlaceHandler(std::function<void()> handler) { m_placeHandler = std::move(handler); }

protected:
    // For backends.
    void reportPlaceChanged();
    // Right before the button hears of the press.
    void setPressedFrame(std::optional<Rect> frame) { m_pressedFrame = frame; }

private:
    std::function<void()> m_placeHandler;
    std::optional<Rect> m_pressedFrame;
};

} // namespace platform
